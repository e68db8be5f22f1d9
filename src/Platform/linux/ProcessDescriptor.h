#pragma once

#include <fcntl.h>

#include <csignal>

// glibc 2.36 forgot to say that these are C functions.
extern "C" {
#include <sys/pidfd.h>
}
