#include "state/StoreFixture.h"
#include "Views/MergePanelModel.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QRandomGenerator>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

QJsonObject object(std::initializer_list<std::pair<QString, QJsonValue>> members)
{
    return QJsonObject(members);
}

QByteArray json(const QJsonObject &object)
{
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

/// What the panel shows of its decisions, read from its rows alone.
struct Shown {
    QSet<QString> approved; ///< needs every group to be unfolded
    QHash<QString, QString> picks;
    QHash<QString, QString> fallbacks;
};

Shown shownBy(const MergePanelModel &panel)
{
    Shown shown;
    for (const MergePanelRow &row : panel.allRows()) {
        if (const auto *change = std::get_if<MergeRow::AutoChangeRow>(&row.content)) {
            shown.approved.insert(change->change.id);
        } else if (const auto *tick = std::get_if<MergeRow::TickRow>(&row.content)) {
            if (tick->isTicked) {
                shown.approved.insert(tick->change.id);
            }
        } else if (const auto *pick = std::get_if<MergeRow::PickRow>(&row.content)) {
            if (pick->selected) {
                shown.picks.insert(pick->pick.keyId, *pick->selected);
            }
        } else if (const auto *fallback = std::get_if<MergeRow::FallbackRow>(&row.content)) {
            shown.fallbacks.insert(fallback->fallback.keyId, fallback->selected);
        }
    }
    return shown;
}

/// A user and a service that do anything in any order. Every apply that reaches the wire is held
/// against what was on show at the moment of pressing "Apply".
class Drive {
public:
    explicit Drive(quint32 seed) : m_random(seed)
    {
        m_world.service.answer(
            u"status"_s,
            Answer::line(
                R"({"type":"status","repos":[{"name":"Demo","path":"/music/Demo","current_branch":"main",)"
                R"("head_commit":"c","head_message":"","is_dirty":false,"file_states":[]}]})"));
        m_world.service.answer(
            u"variation_list"_s,
            Answer::line(R"({"type":"branches","branches":[)"
                         R"({"name":"main","is_current":true,"head_commit":"1"},)"
                         R"({"name":"idea","is_current":false,"head_commit":"2"},)"
                         R"({"name":"live","is_current":false,"head_commit":"3"}]})"));
        m_world.service.answer(u"song_version_create"_s, Answer::ok());
        m_world.service.answer(u"merge_plan"_s, [this](const QJsonObject &) { return m_plan; });
        m_world.service.answer(u"merge_apply"_s, [this](const QJsonObject &) { return m_outcome; });
        m_world.service.answer(u"resolve"_s, [this](const QJsonObject &) { return m_resolution; });
        m_world.connect();
        m_panel.setDaemon(m_world.state.get());
        m_panel.setRepoName(u"Demo"_s);
        m_panel.setSong(u"Song.als"_s);
        QCoreApplication::processEvents();
        m_world.settle();
    }

    void step()
    {
        switch (m_panel.panelCase()) {
        case MergePanelModel::Idle:
            beginMerge();
            break;
        case MergePanelModel::Review:
            decide();
            break;
        case MergePanelModel::Result:
            resolve();
            break;
        case MergePanelModel::Summary:
            finish();
            break;
        case MergePanelModel::Error:
            m_panel.resetToIdle();
            break;
        case MergePanelModel::Planning:
        case MergePanelModel::Merging:
            m_world.settle();
            break;
        }
        if (m_random.bounded(40) == 0) {
            goElsewhere();
        }
        check();
    }

    void checkWire()
    {
        m_world.settle();
        const QList<QJsonObject> sent = m_world.service.requests(u"merge_apply"_s);
        QCOMPARE(sent.size(), m_expected.size());
        for (qsizetype i = 0; i < sent.size(); ++i) {
            compare(sent[i], m_expected[i]);
        }
    }

    int applies() const { return int(m_expected.size()); }

private:
    struct Expected {
        Shown shown;
        QString from;
        QString song;
        QString fingerprint;
    };

    QString any(const QStringList &list) { return list[m_random.bounded(list.size())]; }
    QString side() { return m_random.bounded(2) ? MergeSide::from : MergeSide::into; }

    QJsonObject randomPlan()
    {
        QJsonArray changes;
        for (int i = m_random.bounded(9); i > 0; --i) {
            changes << object({{u"id"_s, u"c%1"_s.arg(i)},
                               {u"side"_s, any({u"from"_s, u"from"_s, u"into"_s, u"both"_s})},
                               {u"summary"_s, u"s"_s},
                               {u"category"_s, any({u"Clips"_s, u"Mixer"_s, u"Tracks"_s})},
                               {u"class"_s, any({u"addition"_s, u"removal"_s})},
                               {u"auto_approved"_s, m_random.bounded(2) == 1},
                               {u"forced_pick"_s, m_random.bounded(4) == 0}});
        }
        QJsonArray picks;
        for (int i = m_random.bounded(5); i > 0; --i) {
            picks << object({{u"key_id"_s, u"p%1"_s.arg(i)},
                             {u"key_summary"_s, any({u"Tempo"_s, u"Volume"_s})},
                             {u"from_summary"_s, u"f"_s},
                             {u"into_summary"_s, u"i"_s}});
        }
        QJsonArray fallbacks;
        for (int i = m_random.bounded(4); i > 0; --i) {
            fallbacks << object({{u"key_id"_s, u"f%1"_s.arg(i)}, {u"region_summary"_s, u"r"_s}});
        }
        return object({{u"type"_s, u"merge_plan_result"_s},
                       {u"changes"_s, changes},
                       {u"picks"_s, picks},
                       {u"fallbacks"_s, fallbacks},
                       {u"clean"_s, false},
                       {u"fingerprint"_s, u"fp%1"_s.arg(++m_plans)}});
    }

    void beginMerge()
    {
        m_plan = m_random.bounded(8) == 0 ? Answer::error(u"not now"_s)
                                          : Answer::line(json(randomPlan()));
        m_panel.setSelectedFrom(any({u"idea"_s, u"live"_s}));
        m_panel.runMerge();
        if (m_random.bounded(2)) {
            m_world.settle();
        }
    }

    void decide()
    {
        const auto plan = std::get<MergePanelCase::Review>(m_panel.panelState()).plan;
        const auto anyOf = [this](const auto &list) {
            return list[m_random.bounded(list.size())];
        };
        switch (m_random.bounded(9)) {
        case 0:
        case 1:
            if (const auto changes = reviewableChanges(plan); !changes.isEmpty()) {
                m_panel.toggleTick(anyOf(changes).id);
            }
            break;
        case 2:
            m_panel.tickAll(any({u"Clips"_s, u"Mixer"_s, u"Tracks"_s}));
            break;
        case 3:
        case 4:
            if (!plan.picks.isEmpty()) {
                m_panel.choosePick(anyOf(plan.picks).keyId, side());
            }
            break;
        case 5:
            m_panel.choosePicks(any({u"Tempo"_s, u"Volume"_s}), side());
            break;
        case 6:
            if (!plan.fallbacks.isEmpty()) {
                m_panel.chooseFallback(anyOf(plan.fallbacks).keyId, side());
            }
            break;
        case 7:
            apply(plan);
            break;
        case 8:
            if (m_random.bounded(5) == 0) {
                m_panel.resetToIdle();
            }
            break;
        }
    }

    void apply(const MergePlanResult &plan)
    {
        unfoldEverything(plan);
        const Shown shown = shownBy(m_panel);
        QCOMPARE(m_panel.canApply(), shown.picks.size() == plan.picks.size());
        const bool canApply = m_panel.canApply();
        switch (m_random.bounded(4)) {
        case 0:
            m_outcome = Answer::error(u"the plan has changed"_s);
            break;
        case 1:
            m_outcome = Answer::line(R"({"type":"merge_result","auto_merged":1})");
            break;
        case 2:
            m_outcome = Answer::line(R"({"type":"merge_result","conflicts":[)"
                                     R"({"id":"k1","track_id":"A"},{"id":"k2","track_id":"B"}]})");
            break;
        case 3:
            m_outcome = Answer::line(R"({"type":"something_new"})");
            break;
        }
        m_panel.apply();
        if (canApply) {
            m_expected.append({shown, m_panel.selectedFrom(), m_panel.song(), *plan.fingerprint});
            QCOMPARE(m_panel.panelCase(), MergePanelModel::Merging);
        } else {
            QCOMPARE(m_panel.panelCase(), MergePanelModel::Review);
        }
    }

    void unfoldEverything(const MergePlanResult &plan)
    {
        for (const ChangeGroup &group : changeGroups(autoChanges(plan))) {
            if (!m_panel.selections().expandedAutoGroups.contains(group.id)) {
                m_panel.toggleAutoGroup(group.id);
            }
        }
        for (const ChangeGroup &group : changeGroups(reviewableChanges(plan))) {
            if (!m_panel.selections().expandedTickGroups.contains(group.id)) {
                m_panel.toggleTickGroup(group.id);
            }
        }
        for (const PickGroup &group : pickGroups(plan.picks)) {
            if (!m_panel.selections().expandedPickGroups.contains(group.id)) {
                m_panel.togglePickGroup(group.id);
            }
        }
    }

    void resolve()
    {
        m_resolution = m_random.bounded(3) ? Answer::ok() : Answer::error(u"busy"_s);
        const QString id = any({u"k1"_s, u"k2"_s});
        m_random.bounded(2) ? m_panel.takeConflict(id) : m_panel.keepConflict(id);
        m_world.settle();
    }

    void finish()
    {
        m_panel.setMergeVersionName(any({QString(), u"v1"_s}));
        m_panel.nameMergeVersion();
        m_world.settle();
        m_panel.resetToIdle();
    }

    void goElsewhere()
    {
        m_panel.setSong(any({u"Song.als"_s, u"Other.als"_s}));
        QCoreApplication::processEvents();
        m_world.settle();
    }

    void check()
    {
        QCOMPARE(m_panel.applyInFlight(), m_panel.panelCase() == MergePanelModel::Merging);
    }

    static void compare(const QJsonObject &sent, const Expected &expected)
    {
        QSet<QString> approved;
        for (const QJsonValue id : sent[u"approved_ids"_s].toArray()) {
            QVERIFY(!approved.contains(id.toString()));
            approved.insert(id.toString());
        }
        QCOMPARE(approved, expected.shown.approved);
        QCOMPARE(sides(sent[u"picks"_s]), expected.shown.picks);
        QCOMPARE(sides(sent[u"fallback_sides"_s]), expected.shown.fallbacks);
        QCOMPARE(sent[u"from"_s].toString(), expected.from);
        QCOMPARE(sent[u"into"_s].toString(), u"main"_s);
        QCOMPARE(sent[u"file"_s].toString(), expected.song);
        QCOMPARE(sent[u"fingerprint"_s].toString(), expected.fingerprint);
    }

    static QHash<QString, QString> sides(const QJsonValue &list)
    {
        QHash<QString, QString> sides;
        for (const QJsonValue pair : list.toArray()) {
            sides.insert(pair[u"key_id"_s].toString(), pair[u"side"_s].toString());
        }
        return sides;
    }

    QRandomGenerator m_random;
    int m_plans = 0;
    Answer m_plan;
    Answer m_outcome;
    Answer m_resolution;
    QList<Expected> m_expected;
    StoreFixture m_world;
    MergePanelModel m_panel;
};

} // namespace

class TestMergePanelRandom : public QObject {
    Q_OBJECT

private slots:
    void whatIsSentIsWhatWasShown_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 12; ++seed) {
            QTest::addRow("seed %u", seed) << seed;
        }
    }
    void whatIsSentIsWhatWasShown()
    {
        QFETCH(quint32, seed);
        Drive drive(seed);
        for (int step = 0; step < 400 && !QTest::currentTestFailed(); ++step) {
            drive.step();
        }
        drive.checkWire();
        QVERIFY(drive.applies() > 0);
    }
};

QTEST_GUILESS_MAIN(TestMergePanelRandom)
#include "tst_merge_panel_random.moc"
