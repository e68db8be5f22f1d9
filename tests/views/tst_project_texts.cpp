#include "FolderListModel.h"
#include "Views/ProjectTexts.h"

#include <QTest>
#include <QTimeZone>

using namespace ostra;
using namespace ostra::ProjectTexts;
using namespace Qt::StringLiterals;

namespace {

constexpr double kNow = 1'750'000'000;

FileState song(const QString &filename, const QString &branch = u"main"_s)
{
    FileState state;
    state.filename = filename;
    state.branch = branch;
    return state;
}

AlbumVersion version(const QString &name, const QList<AlbumVersionSong> &songs = {})
{
    AlbumVersion result;
    result.name = name;
    result.created = u"2025-03-04T10:00:00Z"_s;
    result.songs = songs;
    return result;
}

} // namespace

class TestProjectTexts : public QObject {
    Q_OBJECT

private slots:
    void aSongIsShownWithoutItsFinalAls_data()
    {
        QTest::addColumn<QString>("filename");
        QTest::addColumn<QString>("shown");
        QTest::newRow("set") << u"Mix.als"_s << u"Mix"_s;
        QTest::newRow("upper case") << u"Mix.ALS"_s << u"Mix.ALS"_s;
        QTest::newRow("no ending") << u"Mix"_s << u"Mix"_s;
        QTest::newRow("twice") << u"Mix.als.als"_s << u"Mix.als"_s;
        QTest::newRow("inside") << u"Mix.als.bak"_s << u"Mix.als.bak"_s;
        QTest::newRow("dot in the name") << u"Été v1.2.als"_s << u"Été v1.2"_s;
    }
    void aSongIsShownWithoutItsFinalAls()
    {
        QFETCH(QString, filename);
        QTEST(displayName(filename), "shown");
    }

    void oneSongIsOneSongs() { QCOMPARE(metaLine({song(u"Mix.als"_s)}, {}, kNow), u"1 songs"_s); }

    void noSongsAreZeroSongs() { QCOMPARE(metaLine({}, {}, kNow), u"0 songs"_s); }

    void aProjectWithoutSizeShowsNoSize()
    {
        QCOMPARE(metaLine({song(u"a"_s), song(u"b"_s)}, 0, kNow), u"2 songs"_s);
        QCOMPARE(metaLine({song(u"a"_s), song(u"b"_s)}, std::nullopt, kNow), u"2 songs"_s);
    }

    void theMetaLineJoinsSongsSizeAndTheLatestSave()
    {
        FileState older = song(u"a.als"_s);
        older.lastSaved = static_cast<qint64>(kNow) - 7200;
        FileState newer = song(u"b.als"_s);
        newer.lastSaved = static_cast<qint64>(kNow) - 300;
        QCOMPARE(metaLine({older, newer, song(u"c.als"_s)}, 12'300'000, kNow),
                 u"3 songs · 12.3 MB · saved 5m ago"_s);
    }

    void aSizeReadsAsInAFileManager_data()
    {
        QTest::addColumn<qint64>("bytes");
        QTest::addColumn<QString>("shown");
        QTest::newRow("one") << qint64(1) << u"1 byte"_s;
        QTest::newRow("bytes") << qint64(999) << u"999 bytes"_s;
        QTest::newRow("kilo") << qint64(1000) << u"1 KB"_s;
        QTest::newRow("rounded kilo") << qint64(340'400) << u"340 KB"_s;
        QTest::newRow("rounds up into mega") << qint64(999'600) << u"1 MB"_s;
        QTest::newRow("mega") << qint64(12'345'678) << u"12.3 MB"_s;
        QTest::newRow("whole mega") << qint64(12'000'000) << u"12 MB"_s;
        QTest::newRow("giga") << qint64(1'250'000'000) << u"1.25 GB"_s;
        QTest::newRow("tera") << qint64(2'500'000'000'000) << u"2.5 TB"_s;
        QTest::newRow("most") << std::numeric_limits<qint64>::max() << u"9.22 EB"_s;
    }
    void aSizeReadsAsInAFileManager()
    {
        QFETCH(qint64, bytes);
        QTEST(byteCount(bytes), "shown");
    }

    void twoSongsChangedSinceTheirVersionAreTwoChanged()
    {
        FileState changed = song(u"a.als"_s);
        changed.changedSinceVersion = true;
        QCOMPARE(changedText(changedCount({changed, song(u"b.als"_s), changed})), u"2 changed"_s);
    }

    void aSongThatIsOnlyModifiedIsNotChanged()
    {
        FileState modified = song(u"a.als"_s);
        modified.isModified = true;
        QCOMPARE(changedCount({modified, modified}), 0);
        QCOMPARE(changedText(0), QString());
    }

    void theInfoLineJoinsVariationVersionAndAge()
    {
        FileState state = song(u"Mix.als"_s);
        QCOMPARE(infoLine(state, kNow), QString());
        state.variations = {{u"main"_s, false}, {u"chorus-alt"_s, true}, {u"late"_s, true}};
        QCOMPARE(infoLine(state, kNow), u"chorus-alt"_s);
        state.lastVersion = SongVersionRef{u"mix-v2"_s, u"c0ffee"_s};
        QCOMPARE(infoLine(state, kNow), u"chorus-alt · mix-v2"_s);
        state.lastSaved = static_cast<qint64>(kNow) - 3 * 3600;
        QCOMPARE(infoLine(state, kNow), u"chorus-alt · mix-v2 · saved 3h ago"_s);
        state.variations = {{u"main"_s, false}};
        QCOMPARE(infoLine(state, kNow), u"mix-v2 · saved 3h ago"_s);
    }

    void aDiscoveredProjectTellsItsSets()
    {
        QCOMPARE(untrackedLine({u"/p"_s, u"p"_s, {u"a.als"_s, u"b.als"_s, u"c.als"_s}}),
                 u"UNTRACKED · 3 SETS"_s);
        QCOMPARE(untrackedLine({u"/p"_s, u"p"_s, {u"a.als"_s}}), u"UNTRACKED · 1 SETS"_s);
    }

    void theFooterFollowsTheConnection()
    {
        using enum DaemonState::ConnectionState;
        QCOMPARE(footerText(connected, 0), u"daemon · watching 0 projects"_s);
        QCOMPARE(footerText(connected, 1), u"daemon · watching 1 project"_s);
        QCOMPARE(footerText(connected, 2), u"daemon · watching 2 projects"_s);
        QCOMPARE(footerText(connecting, 1), u"daemon · connecting…"_s);
        QCOMPARE(footerText(disconnected, 7), u"daemon · offline"_s);
    }

    void aBundleWithoutAVersionShowsAQuestionMark()
    {
        QCOMPARE(versionText(u"1.4.2"_s), u"v1.4.2"_s);
        QCOMPARE(versionText(std::nullopt), u"v?"_s);
    }

    void theNoticeNamesTheSongOrTheProjectsSet()
    {
        QCOMPARE(abletonNoticeMessage({u"Demo"_s, u"/p/Demo"_s, u"Mix.als"_s}),
                 u"Live is still playing Mix.als as it was before the switch — don't save it. "
                 "Relaunch to load the switched version."_s);
        QCOMPARE(abletonNoticeMessage({u"Demo"_s, u"/p/Demo"_s, std::nullopt}),
                 u"Live is still playing Demo's current set as it was before the switch — don't "
                 "save it. Relaunch to load the switched version."_s);
    }

    void onlyAWholeComponentIsTheHomeFolder_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("shown");
        QTest::newRow("inside") << u"/home/ada/Music/Sets"_s << u"~/Music/Sets"_s;
        QTest::newRow("home") << u"/home/ada"_s << u"~"_s;
        QTest::newRow("other volume") << u"/media/disk/Sets"_s << u"/media/disk/Sets"_s;
        QTest::newRow("longer name") << u"/home/adam/Sets"_s << u"/home/adam/Sets"_s;
        QTest::newRow("home inside") << u"/mnt/home/ada/Sets"_s << u"/mnt/home/ada/Sets"_s;
    }
    void onlyAWholeComponentIsTheHomeFolder()
    {
        QFETCH(QString, path);
        QFETCH(QString, shown);
        QCOMPARE(homeRelative(path, u"/home/ada"_s), shown);
        QCOMPARE(homeRelative(path, u"/home/ada/"_s), shown);
    }

    void aVariationReferenceHasAShortName_data()
    {
        QTest::addColumn<QString>("reference");
        QTest::addColumn<QString>("shown");
        QTest::newRow("three pieces") << u"song/Mix.als/chorus-alt"_s << u"chorus-alt"_s;
        QTest::newRow("plain") << u"chorus-alt"_s << u"chorus-alt"_s;
        QTest::newRow("two pieces") << u"song/x"_s << u"song/x"_s;
        QTest::newRow("slashes in the name") << u"song/Mix.als/a/b"_s << u"a/b"_s;
        QTest::newRow("another prefix") << u"songs/Mix.als/a"_s << u"songs/Mix.als/a"_s;
    }
    void aVariationReferenceHasAShortName()
    {
        QFETCH(QString, reference);
        QTEST(shortVariation(reference), "shown");
    }

    void aVersionMatchesWhenEverySongSitsOnItsVariation()
    {
        const QList<FileState> songs{song(u"Mix.als"_s, u"chorus-alt"_s), song(u"Intro.als"_s)};
        const AlbumVersionSong mix{u"Mix.als"_s, u"song/Mix.als/chorus-alt"_s, u"c1"_s};
        QVERIFY(matchesSaved(version(u"v"_s, {mix, {u"Intro.als"_s, u"main"_s, u"c2"_s}}), songs));
        QVERIFY(matchesSaved(version(u"v"_s, {mix}), songs));
        QVERIFY(!matchesSaved(version(u"v"_s, {{u"Mix.als"_s, u"main"_s, u"c1"_s}}), songs));
        QVERIFY(!matchesSaved(version(u"v"_s, {mix, {u"Gone.als"_s, u"main"_s, u"c"_s}}), songs));
    }

    void theFirstMatchingNamedVersionIsTheCurrentOne()
    {
        const QList<FileState> songs{song(u"Mix.als"_s)};
        const AlbumVersionSong here{u"Mix.als"_s, u"main"_s, u"c"_s};
        const AlbumVersionSong elsewhere{u"Mix.als"_s, u"alt"_s, u"c"_s};
        QCOMPARE(currentLabel({version(u"auto/1"_s, {here}), version(u"a"_s, {elsewhere}),
                               version(u"b"_s, {here}), version(u"c"_s, {here})},
                              songs),
                 u"b"_s);
    }

    void withoutAMatchTheLabelIsUnsaved()
    {
        const QList<FileState> songs{song(u"Mix.als"_s)};
        const AlbumVersionSong here{u"Mix.als"_s, u"main"_s, u"c"_s};
        QCOMPARE(currentLabel({}, songs), u"unsaved"_s);
        QCOMPARE(currentLabel({version(u"auto/1"_s, {here})}, songs), u"unsaved"_s);
        QCOMPARE(currentLabel({version(u"b"_s, {here})}, std::nullopt), u"unsaved"_s);
        QCOMPARE(currentCaption(u"unsaved"_s), u"current · unsaved"_s);
        QCOMPARE(configurationText(u"unsaved"_s), u"unsaved configuration"_s);
        QCOMPARE(configurationText(u"mix-v2"_s), u"mix-v2"_s);
    }

    void theDisclosureCountsSafetySnapshots()
    {
        QCOMPARE(safetyText(3), u"safety snapshots (3)"_s);
        QVERIFY(isSafetySnapshot(version(u"auto/before-restore"_s)));
        QVERIFY(!isSafetySnapshot(version(u"automatic"_s)));
    }

    void aCreationTimeReadsAsADateOrStandsForItself_data()
    {
        QTest::addColumn<QString>("created");
        QTest::addColumn<QString>("shown");
        QTest::newRow("seconds") << u"2025-03-04T10:00:00Z"_s << u"Mar 4, 2025"_s;
        QTest::newRow("fractions") << u"2025-12-24T10:00:00.123Z"_s << u"Dec 24, 2025"_s;
        QTest::newRow("nanoseconds") << u"2025-12-24T10:00:00.123456789Z"_s << u"Dec 24, 2025"_s;
        QTest::newRow("offset") << u"2025-03-04T10:00:00+02:00"_s << u"Mar 4, 2025"_s;
        QTest::newRow("fractions, offset") << u"2025-03-04T10:00:00.5-0500"_s << u"Mar 4, 2025"_s;
        QTest::newRow("no zone") << u"2025-03-04T10:00:00"_s << u"2025-03-04T10:00:00"_s;
        QTest::newRow("only a date") << u"2025-03-04"_s << u"2025-03-04"_s;
        QTest::newRow("no such day") << u"2025-02-31T10:00:00Z"_s << u"2025-02-31T10:00:00Z"_s;
        QTest::newRow("words") << u"yesterday"_s << u"yesterday"_s;
        QTest::newRow("nothing") << QString() << QString();
    }
    void aCreationTimeReadsAsADateOrStandsForItself()
    {
        QFETCH(QString, created);
        QTEST(createdDate(created), "shown");
    }

    void aCreationTimeIsShownInLocalTime()
    {
        const QDateTime midnight(QDate(2025, 3, 4), QTime(0, 0, 0));
        QCOMPARE(createdDate(midnight.toUTC().toString(Qt::ISODate)), u"Mar 4, 2025"_s);
    }
};

QTEST_GUILESS_MAIN(TestProjectTexts)
#include "tst_project_texts.moc"
