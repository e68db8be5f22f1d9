#pragma once

#include <QObject>

namespace ostra {

/// What the user has asked of the look of every application. Follows the system while it lives;
/// both are false where the system says nothing. OSTRA_REDUCED_MOTION and OSTRA_HIGH_CONTRAST (1 or
/// 0) outrank it, for desktops that cannot say. GUI thread; never blocks.
class DisplayPreferences : public QObject {
    Q_OBJECT

public:
    /// The running system's, owned by `parent`.
    static DisplayPreferences *ofSystem(QObject *parent);

    bool reducedMotion() const;
    bool highContrast() const;

signals:
    void changed();

protected:
    using QObject::QObject;
    void set(bool reducedMotion, bool highContrast);

private:
    bool m_reducedMotion = false;
    bool m_highContrast = false;
};

} // namespace ostra
