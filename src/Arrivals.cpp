#include "Arrivals.h"

#include <QCoreApplication>

namespace ostra {

QEvent::Type arrivalEvent()
{
    static const auto type = static_cast<QEvent::Type>(QEvent::registerEventType());
    return type;
}

void takeArrivals()
{
    QCoreApplication::sendPostedEvents(nullptr, arrivalEvent());
}

} // namespace ostra
