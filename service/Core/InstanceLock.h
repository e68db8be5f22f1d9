#pragma once

#include <QString>

namespace ostra {

/// Makes the service the only one of its home: a lock that the system itself releases when the
/// process ends, however it ends.
class InstanceLock {
public:
    explicit InstanceLock(const QString &path);
    ~InstanceLock();
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;

    bool isHeld() const { return m_fd >= 0; }

private:
    int m_fd = -1;
};

} // namespace ostra
