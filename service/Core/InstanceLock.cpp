#include "Core/InstanceLock.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace ostra {

InstanceLock::InstanceLock(const QString &path)
{
    m_fd = ::open(QFile::encodeName(path).constData(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (m_fd >= 0 && ::flock(m_fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(m_fd);
        m_fd = -1;
    }
}

InstanceLock::~InstanceLock()
{
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

} // namespace ostra
