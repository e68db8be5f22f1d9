#include "Core/Log.h"

#include <QDateTime>
#include <QFile>

#include <cstdio>
#include <memory>
#include <mutex>

namespace ostra::Log {

namespace {

constexpr qint64 kLargestPiece = 1024LL * 1024;

struct Sink {
    std::mutex mutex;
    std::unique_ptr<QFile> file;
};

Sink &sink()
{
    static Sink instance;
    return instance;
}

void openFile(Sink &target, const QString &path)
{
    target.file = std::make_unique<QFile>(path);
    if (!target.file->open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        target.file.reset();
    }
}

void rotateIfLarge(Sink &target)
{
    if (target.file->size() < kLargestPiece) {
        return;
    }
    const QString path = target.file->fileName();
    target.file.reset();
    QFile::remove(path + QLatin1String(".1"));
    QFile::rename(path, path + QLatin1String(".1"));
    openFile(target, path);
}

void write(const QString &line, bool isWarning)
{
    QString oneLine = line;
    oneLine.replace(u'\n', u' ');
    const QByteArray text = QDateTime::currentDateTime().toString(Qt::ISODate).toUtf8() +
                            (isWarning ? " warning: " : " ") + oneLine.toUtf8() + '\n';
    Sink &target = sink();
    const std::lock_guard lock(target.mutex);
    if (target.file) {
        rotateIfLarge(target);
    }
    if (target.file) {
        target.file->write(text);
    }
    if (isWarning || !target.file) {
        std::fputs(text.constData(), stderr);
        std::fflush(stderr);
    }
}

} // namespace

void open(const QString &path)
{
    Sink &target = sink();
    const std::lock_guard lock(target.mutex);
    openFile(target, path);
}

void info(const QString &line)
{
    write(line, false);
}

void warning(const QString &line)
{
    write(line, true);
}

} // namespace ostra::Log
