#pragma once

#include <QEvent>

namespace ostra {

/// The kind of event by which work (Mailbox) and values (Handoff) reach the thread they are for.
QEvent::Type arrivalEvent();

/// Does now, and not when the event loop is reached, what has come for objects of this thread that
/// way; all other events stay where they are.
void takeArrivals();

} // namespace ostra
