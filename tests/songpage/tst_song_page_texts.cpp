#include "Views/SongPageTexts.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace ostra {

namespace {

const SongVersionRef kVersion{u"mix-v2"_s, u"aa11"_s};

SongGraphNode node(const QString &id, const QString &variation, bool isTip)
{
    SongGraphNode node;
    node.id = id;
    node.variation = variation;
    node.isTip = isTip;
    return node;
}

} // namespace

class TestSongPageTexts : public QObject {
    Q_OBJECT

private slots:
    void metaLineJoinsVersionAndAge();
    void metaLineShowsWhatThereIs();
    void diffIsCaptionedByTheLastVersion();
    void diffWithoutAVersionIsTheLatestSave();
    void comparesFromTheVersionToTheTip();
    void comparesTheTipWithTheSaveBeforeWithoutAVersion();
    void takesTheTipOfTheCurrentVariation();
    void fallsBackToTheServicesHeadWithoutAGraph();
    void fallsBackToTheServicesHeadWithoutATip();
    void asksBeforeDeleting();
};

void TestSongPageTexts::metaLineJoinsVersionAndAge()
{
    const FileState song{.lastVersion = kVersion, .lastSaved = 1'700'000'000};
    QCOMPARE(SongPageTexts::metaLine(song, 1'700'000'300), u"mix-v2 · saved 5m ago"_s);
}

void TestSongPageTexts::metaLineShowsWhatThereIs()
{
    QCOMPARE(SongPageTexts::metaLine({.lastVersion = kVersion}), u"mix-v2"_s);
    QCOMPARE(SongPageTexts::metaLine({.lastSaved = 1'700'000'000}, 1'700'000'010),
             u"saved just now"_s);
    QCOMPARE(SongPageTexts::metaLine({}), QString());
}

void TestSongPageTexts::diffIsCaptionedByTheLastVersion()
{
    QCOMPARE(SongPageTexts::diffContext(kVersion), u"since mix-v2"_s);
}

void TestSongPageTexts::diffWithoutAVersionIsTheLatestSave()
{
    QCOMPARE(SongPageTexts::diffContext(std::nullopt), u"latest save"_s);
}

void TestSongPageTexts::comparesFromTheVersionToTheTip()
{
    const SongGraph graph{
        .nodes = {node(u"c1"_s, u"main"_s, false), node(u"c2"_s, u"main"_s, true)},
        .lanes = {u"main"_s},
        .current = u"main"_s};
    QCOMPARE(SongPageTexts::diffRange(kVersion, graph),
             (SongPageTexts::DiffRange{u"mix-v2"_s, u"c2"_s}));
}

void TestSongPageTexts::comparesTheTipWithTheSaveBeforeWithoutAVersion()
{
    const SongGraph graph{.nodes = {node(u"c2"_s, u"main"_s, true)}, .current = u"main"_s};
    QCOMPARE(SongPageTexts::diffRange(std::nullopt, graph),
             (SongPageTexts::DiffRange{u"c2~1"_s, u"c2"_s}));
}

void TestSongPageTexts::takesTheTipOfTheCurrentVariation()
{
    const SongGraph graph{.nodes = {node(u"c2"_s, u"main"_s, true), node(u"c3"_s, u"idea"_s, true)},
                          .lanes = {u"main"_s, u"idea"_s},
                          .current = u"idea"_s};
    QCOMPARE(SongPageTexts::diffRange(std::nullopt, graph),
             (SongPageTexts::DiffRange{u"c3~1"_s, u"c3"_s}));
}

void TestSongPageTexts::fallsBackToTheServicesHeadWithoutAGraph()
{
    QCOMPARE(SongPageTexts::diffRange(std::nullopt, std::nullopt),
             (SongPageTexts::DiffRange{u"HEAD~1"_s, u"HEAD"_s}));
    QCOMPARE(SongPageTexts::diffRange(kVersion, std::nullopt),
             (SongPageTexts::DiffRange{u"mix-v2"_s, u"HEAD"_s}));
}

void TestSongPageTexts::fallsBackToTheServicesHeadWithoutATip()
{
    const SongGraph graph{.nodes = {node(u"c2"_s, u"main"_s, false)}, .current = u"main"_s};
    QCOMPARE(SongPageTexts::diffRange(std::nullopt, graph),
             (SongPageTexts::DiffRange{u"HEAD~1"_s, u"HEAD"_s}));
}

void TestSongPageTexts::asksBeforeDeleting()
{
    QCOMPARE(SongPageTexts::deleteVersionQuestion(u"mix %2"_s),
             u"Delete mix %2? Its saves stay in history."_s);
    QCOMPARE(SongPageTexts::deleteVariationQuestion(u"chorus idea"_s),
             u"Delete chorus idea? Unmerged work is lost."_s);
    QCOMPARE(SongPageTexts::deleteSongQuestion(u"Süße Träume"_s),
             u"Moves Süße Träume to the Trash and removes its history from OSTRA."_s);
}

} // namespace ostra

QTEST_GUILESS_MAIN(ostra::TestSongPageTexts)
#include "tst_song_page_texts.moc"
