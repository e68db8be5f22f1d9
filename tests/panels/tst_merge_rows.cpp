#include "Views/MergePanelRows.h"

#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

MergePlanChangeDTO change(const QString &id, const QString &side, const QString &category,
                          bool autoApproved, const QString &deltaClass = u"addition"_s)
{
    MergePlanChangeDTO dto;
    dto.id = id;
    dto.side = side;
    dto.deltaClass = deltaClass;
    dto.summary = u"summary of "_s + id;
    dto.category = category;
    dto.autoApproved = autoApproved;
    return dto;
}

/// A row in one line: its kind, its text, and what it is set to.
QString describe(const MergePanelRow &row)
{
    const auto text = [&row](MergePanelRows::Role role) {
        return MergePanelRowTraits::data(row, role).toString();
    };
    const auto kind =
        MergePanelRows::Kind(MergePanelRowTraits::data(row, MergePanelRows::KindRole).toInt());
    return QString::fromLatin1(QMetaEnum::fromType<MergePanelRows::Kind>().valueToKey(kind)) +
           u": "_s +
           QStringList{text(MergePanelRows::SymbolRole), text(MergePanelRows::TitleRole),
                       text(MergePanelRows::CountRole), text(MergePanelRows::SelectedRole)}
               .join(u' ')
               .simplified();
}

QStringList describe(const QList<MergePanelRow> &rows)
{
    QStringList list;
    for (const MergePanelRow &row : rows) {
        list << describe(row);
    }
    return list;
}

QStringList rowsOf(const MergePlanResult &plan, const MergeSelections &selections = {})
{
    return describe(reviewRows(MergeReview(plan), selections, u"main"_s, u"idea"_s));
}

MergePlanResult everySection()
{
    MergePlanResult plan;
    plan.changes = {change(u"a1"_s, MergeSide::from, u"Clips"_s, true),
                    change(u"a2"_s, MergeSide::from, u"Tracks"_s, true, u"modification"_s),
                    change(u"x"_s, MergeSide::into, u"Clips"_s, true),
                    change(u"r1"_s, MergeSide::from, u"Mixer"_s, false),
                    change(u"y"_s, MergeSide::into, u"Mixer"_s, false),
                    change(u"a3"_s, MergeSide::from, u"Clips"_s, true, u"removal"_s)};
    plan.picks = {{u"k1"_s, u"Tempo"_s, u"128"_s, u"120"_s}};
    plan.fallbacks = {{u"f1"_s, u"Groove pool"_s}};
    return plan;
}

} // namespace

class TestMergeRows : public QObject {
    Q_OBJECT

private slots:
    void anEmptyPlanHasNoRows() { QCOMPARE(rowsOf({}), QStringList()); }

    void sectionsComeInOrderAndGroupsAreFolded()
    {
        QCOMPARE(rowsOf(everySection()),
                 (QStringList{
                     u"Section: Auto"_s, u"AutoGroup: Clips 2"_s, u"AutoGroup: Tracks 1"_s,
                     u"Section: Review"_s, u"TickGroup: Mixer 1"_s, u"Section: Picks"_s,
                     u"Pick: Tempo"_s, u"Section: Fallback"_s,
                     u"Caption: these files couldn't merge piece-by-piece — pick a side per file"_s,
                     u"Fallback: Groove pool into"_s}));
    }

    void unfoldedGroupsShowTheirChangesInPlanOrder()
    {
        MergeSelections selections;
        selections.expandedAutoGroups = {u"Clips"_s};
        selections.expandedTickGroups = {u"Mixer"_s};
        const QStringList rows = rowsOf(everySection(), selections);
        QCOMPARE(rows.mid(1, 6),
                 (QStringList{u"AutoGroup: Clips 2"_s, u"AutoChange: + summary of a1"_s,
                              u"AutoChange: ~ summary of a3"_s, u"AutoGroup: Tracks 1"_s,
                              u"Section: Review"_s, u"TickGroup: Mixer 1"_s}));
        QCOMPARE(rows[7], u"Tick: summary of r1"_s);
    }

    void aPlanWithoutPicksHasNoPicksSection()
    {
        MergePlanResult plan = everySection();
        plan.picks.clear();
        QVERIFY(!rowsOf(plan).contains(u"Section: Picks"_s));
    }

    void changesOfTheOtherSideAreNeitherShownNorApproved()
    {
        const MergePlanResult plan = everySection();
        QCOMPARE(autoApprovedIds(plan), (QStringList{u"a1"_s, u"a2"_s, u"a3"_s}));
        QCOMPARE(reviewableChanges(plan).size(), 1);
    }

    void onePickOfAKeyHasNoGroupHeader()
    {
        const QStringList rows = rowsOf(everySection());
        QVERIFY(std::ranges::none_of(
            rows, [](const QString &row) { return row.startsWith(u"PicksGroup"); }));
    }

    void severalPicksOfAKeyFoldIntoOnePairOfOptions()
    {
        MergePlanResult plan;
        plan.picks = {{u"k1"_s, u"Volume"_s, u"a"_s, u"b"_s},
                      {u"k2"_s, u"Tempo"_s, u"a"_s, u"b"_s},
                      {u"k3"_s, u"Volume"_s, u"a"_s, u"b"_s}};
        MergeSelections selections;
        QCOMPARE(rowsOf(plan, selections),
                 (QStringList{u"Section: Picks"_s, u"PicksGroup: Volume 2"_s, u"Pick: Tempo"_s}));
        selections.expandedPickGroups = {u"Volume"_s};
        selections.pickChoices = {{u"k3"_s, MergeSide::from}};
        QCOMPARE(rowsOf(plan, selections),
                 (QStringList{u"Section: Picks"_s, u"PicksGroup: Volume 2"_s, u"Pick: Volume"_s,
                              u"Pick: Volume from"_s, u"Pick: Tempo"_s}));
    }

    void aFoldedGroupShowsOnlyAChoiceThatAllItsPicksShare()
    {
        MergePlanResult plan;
        plan.picks = {{u"k1"_s, u"Volume"_s, {}, {}}, {u"k2"_s, u"Volume"_s, {}, {}}};
        MergeSelections selections;
        selections.pickChoices = {{u"k1"_s, MergeSide::from}};
        QCOMPARE(rowsOf(plan, selections).last(), u"PicksGroup: Volume 2"_s);
        selections.pickChoices.insert(u"k2"_s, MergeSide::into);
        QCOMPARE(rowsOf(plan, selections).last(), u"PicksGroup: Volume 2"_s);
        selections.pickChoices.insert(u"k2"_s, MergeSide::from);
        QCOMPARE(rowsOf(plan, selections).last(), u"PicksGroup: Volume 2 from"_s);
    }

    void theWholeFileWarningMakesRoomForItself()
    {
        MergePlanResult plan;
        plan.fallbacks = {{u"f"_s, u"Groove pool"_s}};
        MergeSelections selections;
        const auto heightOfRow = [&] {
            return reviewRows(MergeReview(plan), selections, {}, {}).last().height;
        };
        const int plain = heightOfRow();
        selections.fallbackChoices = {{u"f"_s, MergeSide::from}};
        QVERIFY(heightOfRow() > plain);
        selections.fallbackChoices = {{u"f"_s, MergeSide::into}};
        QCOMPARE(heightOfRow(), plain);
    }

    void aConflictTellsItsTracksAndBothSides()
    {
        const MergeRow::ConflictRow row{{u"Bass volume"_s, u"Bass"_s},
                                        {u"Bass"_s, u"Sub"_s},
                                        u"Demo"_s,
                                        u"idea"_s,
                                        u"main"_s,
                                        false,
                                        std::nullopt};
        const QList<MergePanelRow> rows = conflictRows({row});
        QCOMPARE(describe(rows),
                 (QStringList{u"Section: CONFLICTS"_s, u"Conflict: Bass volume"_s}));
        const auto text = [&rows](int role) {
            return MergePanelRowTraits::data(rows.last(), role).toString();
        };
        QCOMPARE(text(MergePanelRows::TracksRole), u"tracks: Bass, Sub"_s);
        QCOMPARE(text(MergePanelRows::DetailRole), u"keep main · take idea"_s);
        QCOMPARE(conflictRows({}), QList<MergePanelRow>());
    }
};

QTEST_APPLESS_MAIN(TestMergeRows)
#include "tst_merge_rows.moc"
