#include "Platform/Installation.h"

#include <QCoreApplication>
#include <QDir>

namespace ostra::Installation {

namespace {
QString besideExecutable(const QString &relative)
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + u'/' + relative);
}
} // namespace

QString helpersPath()
{
#ifdef Q_OS_MACOS
    return besideExecutable(QStringLiteral("../Helpers"));
#else
    return besideExecutable(QStringLiteral("../libexec/ostra"));
#endif
}

QString sharePath()
{
#ifdef Q_OS_MACOS
    return besideExecutable(QStringLiteral("../Resources"));
#else
    return besideExecutable(QStringLiteral("../share/ostra"));
#endif
}

} // namespace ostra::Installation
