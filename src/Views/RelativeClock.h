#pragma once

#include <QObject>
#include <QTimer>

namespace ostra {

/// Tells views when ages such as "5m ago" have to be written anew: once a minute, and only while
/// the window is shown. A hidden window costs nothing. Main thread only.
class RelativeClock : public QObject {
    Q_OBJECT

public:
    explicit RelativeClock(QObject *parent = nullptr);

    /// Turning it on ticks at once, for the time that passed unseen.
    void setRunning(bool running);
    bool isRunning() const { return m_timer.isActive(); }

signals:
    void tick();

private:
    QTimer m_timer;
};

} // namespace ostra
