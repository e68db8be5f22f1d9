# One place for what every target of the project has in common.

include(CheckLinkerFlag)

add_library(ostra_options INTERFACE)
# Designated initializers are there to leave members out; GCC alone warns about it. When it
# optimizes or instruments, it also takes the unused members of variants for read.
target_compile_options(ostra_options INTERFACE
    -Wall -Wextra -Wpedantic -Werror -Wno-missing-field-initializers
    $<$<AND:$<CXX_COMPILER_ID:GNU>,$<NOT:$<CONFIG:Debug>>>:-Wno-maybe-uninitialized>)
target_compile_definitions(ostra_options INTERFACE
    QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_FOREACH QT_NO_URL_CAST_FROM_STRING
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(OSTRA_SANITIZE)
    target_compile_options(ostra_options INTERFACE
        $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>
        -fsanitize=${OSTRA_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(ostra_options INTERFACE -fsanitize=${OSTRA_SANITIZE})
endif()
check_linker_flag(CXX "-fuse-ld=lld" OSTRA_HAS_LLD)
if(OSTRA_HAS_LLD AND NOT APPLE)
    target_link_options(ostra_options INTERFACE -fuse-ld=lld)
endif()

# A static library of one room. Headers are included from the roots "src" and "service":
# #include "Models/Command.h".
function(ostra_library name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LINKS" ${ARGN})
    add_library(${name} STATIC ${ARG_SOURCES})
    target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(${name} PUBLIC ${ARG_LINKS} PRIVATE ostra_options)
endfunction()

# GLib's event loop wakes by means that thread sanitizer takes for races; Qt has one of its own.
if(OSTRA_SANITIZE STREQUAL "thread")
    set(OSTRA_TEST_ENVIRONMENT "QT_NO_GLIB=1")
endif()

# A test program, registered with ctest under the program's name.
# TIMEOUT in seconds; LABELS lets "./dev test" pick a part.
function(ostra_test name)
    cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LINKS;LABELS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE ostra_options ostra_test_support ${ARG_LINKS} Qt6::Test)
    add_test(NAME ${name} COMMAND ${name})
    if(NOT ARG_TIMEOUT)
        set(ARG_TIMEOUT 120)
    endif()
    set_tests_properties(${name} PROPERTIES
        TIMEOUT ${ARG_TIMEOUT}
        LABELS "${ARG_LABELS}"
        ENVIRONMENT "QT_QPA_PLATFORM=offscreen;QT_QUICK_BACKEND=software;LC_ALL=C.UTF-8;TSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/cmake/tsan.supp:ignore_noninstrumented_modules=1;${OSTRA_TEST_ENVIRONMENT}")
endfunction()
