#include "Core/Log.h"
#include "Store/AtomicFile.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace ostra;

class TestLog : public QObject {
    Q_OBJECT

private slots:
    void logIsBoundedAndKeepsTheLatestLines();
    void lineStaysOneLine();

private:
    QTemporaryDir m_folder;
};

void TestLog::logIsBoundedAndKeepsTheLatestLines()
{
    constexpr qint64 kPiece = 1024LL * 1024;
    const QString path = m_folder.filePath(QStringLiteral("service.log"));
    Log::open(path);
    for (int i = 0; i < 5'000; ++i) {
        Log::info(QStringLiteral("line %1 %2").arg(i).arg(QString(1'000, u'x')));
    }
    const QDir dir(m_folder.path());
    QCOMPARE(dir.entryList(QDir::Files, QDir::Name),
             QStringList({QStringLiteral("service.log"), QStringLiteral("service.log.1")}));
    for (const QFileInfo &file : dir.entryInfoList(QDir::Files)) {
        QVERIFY(file.size() < kPiece + 2'000);
    }
    const QByteArray old = *readWholeFile(path + QStringLiteral(".1"));
    const QByteArray latest = *readWholeFile(path);
    QVERIFY(latest.contains(" line 4999 "));
    const QByteArray next = latest.sliced(latest.indexOf(" line ") + 6);
    const int first = next.first(next.indexOf(' ')).toInt();
    QVERIFY(old.contains(" line " + QByteArray::number(first - 1) + ' ')); // nothing in between
}

void TestLog::lineStaysOneLine()
{
    const QString path = m_folder.filePath(QStringLiteral("other.log"));
    Log::open(path);
    Log::info(QStringLiteral("a name\nwith a break"));
    QCOMPARE(readWholeFile(path)->count('\n'), 1);
}

QTEST_GUILESS_MAIN(TestLog)
#include "tst_log.moc"
