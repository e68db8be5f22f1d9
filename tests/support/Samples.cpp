#include "support/Samples.h"

#include <QDir>
#include <QFile>

namespace ostra {

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("cannot read %s", qPrintable(path));
    }
    return file.readAll();
}

QString inSourceTree(const QString &path)
{
    return QStringLiteral(OSTRA_SOURCE_DIR "/") + path;
}

} // namespace

QByteArray sample(const QString &name)
{
    QByteArray line = contents(inSourceTree(QStringLiteral("tests/samples/%1.json").arg(name)));
    line.chop(1);
    return line;
}

QStringList sampleNames(const QString &folder)
{
    const QDir dir(inSourceTree(QStringLiteral("tests/samples/") + folder));
    QStringList names;
    for (const QFileInfo &file : dir.entryInfoList(QDir::Files, QDir::Name)) {
        names.append(folder + QChar(u'/') + file.completeBaseName());
    }
    return names;
}

QList<QByteArray> contentsOf(const QString &folder)
{
    QList<QByteArray> all;
    for (const QFileInfo &file :
         QDir(inSourceTree(folder)).entryInfoList(QDir::Files, QDir::Name)) {
        all.append(contents(file.filePath()));
    }
    return all;
}

} // namespace ostra
