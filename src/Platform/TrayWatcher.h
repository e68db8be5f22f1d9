#pragma once

#include <QObject>

#include <memory>

namespace ostra {

/// Tells whether there is a menu bar or system tray to put an item into, and when that changes.
/// Made after the application object; main thread only.
class TrayWatcher : public QObject {
    Q_OBJECT

public:
    enum class Tray { unknown, absent, present }; ///< unknown only until the first answer

    using QObject::QObject;

    Tray tray() const { return m_tray; }
    /// Whether the tray colours a template image for light and dark; a constant of the platform.
    virtual bool tintsIcons() const = 0;

    /// Takes in what the desktop has answered by now, and not when the event loop is reached.
    virtual void takeAnswer() {}

    static std::unique_ptr<TrayWatcher> make();

signals:
    void trayChanged();

protected:
    void setTray(Tray tray)
    {
        if (tray != m_tray) {
            m_tray = tray;
            emit trayChanged();
        }
    }

private:
    Tray m_tray = Tray::unknown;
};

} // namespace ostra
