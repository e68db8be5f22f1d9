#include "AbletonBridge.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace ostra {

class TestAbletonBridge : public QObject {
    Q_OBJECT

private slots:
    void init();
    void describesTheTimeOut();
    void passesThePlatformsDescriptionOn();

    void opensTheMoreRecentlyModifiedSet();
    void prefersTheFirstNameAmongEquallyOldSets();
    void findsNothingInSubfolders();
    void ignoresUpperCaseEndings();
    void ignoresAFileThatIsNothingButTheEnding();
    void ignoresFoldersThatLookLikeSets();
    void ignoresHiddenCompanionFiles();
    void findsNothingInAMissingFolder();

private:
    QTemporaryDir m_temporary;
    QString m_folder;

    void touch(const QString &name, qint64 modified) const;
    QString mostRecent() const;
};

void TestAbletonBridge::init()
{
    m_folder = m_temporary.filePath(QString::fromUtf8(QTest::currentTestFunction()));
    QVERIFY(QDir().mkpath(m_folder));
}

void TestAbletonBridge::touch(const QString &name, qint64 modified) const
{
    QFile file(m_folder + u'/' + name);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.setFileTime(QDateTime::fromSecsSinceEpoch(modified),
                             QFileDevice::FileModificationTime));
}

QString TestAbletonBridge::mostRecent() const
{
    const auto found = AbletonBridge::mostRecentALS(m_folder);
    return found ? QDir(m_folder).relativeFilePath(found->toLocalFile()) : QString();
}

void TestAbletonBridge::describesTheTimeOut()
{
    QCOMPARE(AbletonBridge::description(AbletonBridge::RelaunchError::quitTimedOut),
             u"Ableton didn't quit — it may be showing a save dialog. Answer it, then retry."_s);
}

void TestAbletonBridge::passesThePlatformsDescriptionOn()
{
    QCOMPARE(AbletonBridge::description(u"The disk is gone."_s), u"The disk is gone."_s);
}

void TestAbletonBridge::opensTheMoreRecentlyModifiedSet()
{
    touch(u"Ältere Fassung.als"_s, 1'700'000'000);
    touch(u"Neuere Fassung.als"_s, 1'700'000'001);
    touch(u"notes.txt"_s, 1'700'000'002);
    QCOMPARE(mostRecent(), u"Neuere Fassung.als"_s);
}

void TestAbletonBridge::prefersTheFirstNameAmongEquallyOldSets()
{
    touch(u"B.als"_s, 1'700'000'000);
    touch(u"A.als"_s, 1'700'000'000);
    touch(u"C.als"_s, 1'700'000'000);
    QCOMPARE(mostRecent(), u"A.als"_s);
}

void TestAbletonBridge::findsNothingInSubfolders()
{
    QVERIFY(QDir(m_folder).mkdir(u"Backup"_s));
    touch(u"Backup/Song.als"_s, 1'700'000'000);
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder), std::nullopt);
}

void TestAbletonBridge::ignoresUpperCaseEndings()
{
    touch(u"Song.ALS"_s, 1'700'000'000);
    touch(u"Song.Als"_s, 1'700'000'000);
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder), std::nullopt);
}

void TestAbletonBridge::ignoresAFileThatIsNothingButTheEnding()
{
    touch(u".als"_s, 1'700'000'000);
    touch(u"als"_s, 1'700'000'000);
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder), std::nullopt);
}

void TestAbletonBridge::ignoresFoldersThatLookLikeSets()
{
    QVERIFY(QDir(m_folder).mkdir(u"Folder.als"_s));
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder), std::nullopt);
}

void TestAbletonBridge::ignoresHiddenCompanionFiles()
{
    touch(u"Song.als"_s, 1'700'000'000);
    touch(u"._Song.als"_s, 1'700'000'001);
    QCOMPARE(mostRecent(), u"Song.als"_s);
}

void TestAbletonBridge::findsNothingInAMissingFolder()
{
    QCOMPARE(AbletonBridge::mostRecentALS(m_folder + u"/missing"_s), std::nullopt);
}

} // namespace ostra

QTEST_GUILESS_MAIN(ostra::TestAbletonBridge)
#include "tst_ableton_bridge.moc"
