#include "Design/FontRegistration.h"

#include <QCoreApplication>
#include <QDir>
#include <QFontDatabase>

namespace ostra {

QString bundledFontsFolder()
{
    const QDir programs(QCoreApplication::applicationDirPath());
    const QString inBundle = programs.filePath(QStringLiteral("../Resources/Fonts"));
    if (QFileInfo(inBundle).isDir()) {
        return QDir::cleanPath(inBundle);
    }
    return QDir::cleanPath(programs.filePath(QStringLiteral("../share/ostra/Fonts")));
}

int registerBundledFonts(const QString &folder)
{
    int registered = 0;
    const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &file : files) {
        if (file.suffix().toLower() == u"otf" &&
            QFontDatabase::addApplicationFont(file.filePath()) >= 0) {
            ++registered;
        }
    }
    return registered;
}

} // namespace ostra
