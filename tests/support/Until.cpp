#include "support/Until.h"

#include <QCoreApplication>
#include <QTimer>

namespace ostra {

using namespace std::chrono_literals;

bool until(const std::function<bool()> &done)
{
    // Counted in turns of this thread and not in time: on a busy machine the test and what it
    // waits for are slow together.
    constexpr int kPatience = 20'000;
    int looks = 0;
    QTimer look; // for what is true without an event of this thread
    QObject::connect(&look, &QTimer::timeout, [&looks] { ++looks; });
    look.start(1ms);
    while (!done()) {
        if (looks > kPatience) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

} // namespace ostra
