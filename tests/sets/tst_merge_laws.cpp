#include "Music.h"
#include "RandomEdits.h"
#include "Sets/Set.h"
#include "Sets/SetMerge.h"
#include "SetSketch.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

using namespace ostra;

namespace {

struct Triple {
    QByteArray base;
    QByteArray into;
    QByteArray from;

    MergeInputs inputs() const { return {base, into, from, QStringLiteral("Song.als")}; }
};

/// Without what a merge leaves as it is in "into": what is armed or soloed, the loop brace, how
/// things look, where files lie. An automatic name says where its track stands.
QByteArrayList essence(const QByteArray &music)
{
    static const QByteArrayList kKept{"<IsArmed",    "<SoloSink",       "<LoopStart",
                                      "<LoopLength", "<LoopOn",         "<RelativePath",
                                      "<Path",       "<MinTrackHeight", "<TrackGroupId"};
    auto rows = music.split('\n');
    rows.removeIf([](const QByteArray &row) {
        return std::ranges::any_of(kKept, [&](const auto &name) { return row.startsWith(name); });
    });
    for (auto &row : rows) {
        row = row.left(row.indexOf(" SelectedToolPanel"));
    }
    return rows;
}

QStringList violations(const QByteArray &file)
{
    const auto set = readSet(file);
    return set ? validateSet(*set) : QStringList{QStringLiteral("unreadable")};
}

MergeDecisions everything(const MergePlanResult &plan, const char *side = "from")
{
    MergeDecisions decisions;
    decisions.fingerprint = plan.fingerprint;
    for (const auto &change : plan.changes) {
        decisions.approvedIds.append(change.id);
    }
    for (const auto &pick : plan.picks) {
        decisions.picks.append({pick.keyId, QString::fromLatin1(side)});
    }
    for (const auto &fallback : plan.fallbacks) {
        decisions.fallbackSides.append({fallback.keyId, QString::fromLatin1(side)});
    }
    return decisions;
}

/// Scenes are counted in each side's own order.
QString withoutSceneNumbers(QString text)
{
    static const QRegularExpression kNumber(QStringLiteral("scene \\d+"),
                                            QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression kClips(QStringLiteral(" with \\d+ clips?$"));
    return text.replace(kNumber, QStringLiteral("scene")).remove(kClips).toLower();
}

/// What a plan says to the user, piece by piece.
class Words {
public:
    explicit Words(const MergePlanResult &plan) : m_isWhole(!plan.fallbacks.isEmpty())
    {
        for (const auto &change : plan.changes) {
            add(change.summary);
            for (const auto &part : change.detail.value_or(QString()).split(kJoint)) {
                add(part);
            }
        }
        for (const auto &pick : plan.picks) {
            m_titles.append(withoutSceneNumbers(pick.keySummary));
            for (const auto &part : pick.fromSummary.split(kJoint)) {
                m_states.append(withoutSceneNumbers(part));
            }
        }
    }

    bool tell(const QString &line) const
    {
        const auto text = withoutSceneNumbers(line);
        const auto isTold = [&](const QString &state) {
            return state.size() > 3 && (text.endsWith(state) || state.contains(text));
        };
        return m_isWhole || m_changes.contains(text) || isToldTogether(text) ||
               std::ranges::any_of(m_titles,
                                   [&](const auto &title) { return text.contains(title); }) ||
               std::ranges::any_of(m_states, isTold);
    }

private:
    void add(const QString &text) { m_changes.append(withoutSceneNumbers(text)); }

    /// A difference counts equal gestures, a plan lists them.
    bool isToldTogether(const QString &text) const
    {
        static const QRegularExpression kClips(
            QStringLiteral("^(?:.* of )?\\d+ clips .*?(?:to|in|from|of) (.*?)(?: changed)?$"));
        static const QRegularExpression kScenes(
            QStringLiteral("^(added|removed) \\d+ (scene|locator)s$"));
        const auto clips = kClips.match(text);
        const auto scenes = kScenes.match(text);
        const auto begins = [&](const QString &start) {
            const auto fits = [&](const QString &other) {
                return other.startsWith(start);
            };
            return std::ranges::any_of(m_changes, fits) || std::ranges::any_of(m_titles, fits);
        };
        return (clips.hasMatch() && begins(clips.captured(1) + QStringLiteral(": "))) ||
               (scenes.hasMatch() && begins(scenes.captured(1) + u' ' + scenes.captured(2)));
    }

    inline static const QString kJoint = QStringLiteral(" · ");
    bool m_isWhole;
    QStringList m_changes;
    QStringList m_titles;
    QStringList m_states;
};

bool isMove(const QString &line)
{
    return line.startsWith(QStringLiteral("Track “")) && line.endsWith(QStringLiteral(" moved"));
}

/// Whether the tracks of both sides already stand in one order: a track that moved past one that
/// the other side removed has nowhere to move.
bool isSameOrder(const QByteArray &into, const QByteArray &from)
{
    return std::ranges::none_of(differences(into, from), isMove);
}

/// What "from" changed, "into" did not, and the plan does not mention.
QStringList droppedSilently(const Triple &all)
{
    const Words words(planMerge(all.inputs()));
    auto dropped = differences(all.base, all.from);
    const auto ours = differences(all.base, all.into);
    dropped.removeIf([&](const QString &line) {
        return ours.contains(line) || words.tell(line) ||
               (isMove(line) && isSameOrder(all.into, all.from));
    });
    return dropped;
}

/// Successive saves that lie beside the tests.
QStringList ownHistory()
{
    QStringList files;
    for (const auto *const name : {"test-1", "test-2", "test-4", "test-5", "test-6"}) {
        files.append(QStringLiteral(OSTRA_SET_DATA "%1.als").arg(QLatin1String(name)));
    }
    return files;
}

/// All ways to take three states of one history for an ancestor and two variations.
QList<QPair<QString, Triple>> realTriples()
{
    QHash<QString, QStringList> histories{{QStringLiteral("data"), ownHistory()}};
    for (const auto &path : realSets()) {
        const bool isOwn = path.contains(QStringLiteral("krahd"));
        if (path.contains(QStringLiteral("/hist/")) && !isOwn && QFileInfo(path).size() < 300'000) {
            histories[QFileInfo(path).path()].append(path);
        }
    }
    QList<QPair<QString, Triple>> triples;
    for (const auto &history : histories) {
        for (const auto &base : history) {
            for (const auto &into : history) {
                for (const auto &from : history) {
                    if (base != into && base != from && into != from) {
                        const auto name = [](const QString &path) {
                            return QFileInfo(path).fileName().left(2);
                        };
                        triples.append({QFileInfo(base).path().section(u'/', -1) + u' ' +
                                            name(base) + u' ' + name(into) + u' ' + name(from),
                                        {readFile(base), readFile(into), readFile(from)}});
                    }
                }
            }
        }
    }
    return triples;
}

} // namespace

/// What holds for every merge, whatever was edited.
class TestMergeLaws : public QObject {
    Q_OBJECT

private slots:
    void everyGeneratedChangeIsInThePlan();
    void everyRealChangeIsInThePlan();
    void everyRealMergeIsSoundEitherWay();
    void takingAllOfARealSaveGivesItsMusic();
};

void TestMergeLaws::everyGeneratedChangeIsInThePlan()
{
    RandomEdits random(7);
    int told = 0;
    for (int round = 0; round < 500; ++round) {
        auto base = SetSketch::song();
        random.editAnything(base, 3);
        auto into = base;
        auto from = base;
        random.editAnything(into, 1 + random.below(6));
        random.editAnything(from, 1 + random.below(2));
        const Triple all{base.file(), into.file(), from.file()};
        const auto dropped = droppedSilently(all);
        QVERIFY2(dropped.isEmpty(), qPrintable(QStringLiteral("%1: %2").arg(round).arg(
                                        dropped.join(QLatin1Char('\n')))));
        told += static_cast<int>(differences(all.base, all.from).size());
    }
    QVERIFY(told > 500);
}

void TestMergeLaws::everyRealChangeIsInThePlan()
{
    for (const auto &[name, all] : realTriples()) {
        const auto dropped = droppedSilently(all);
        QVERIFY2(dropped.isEmpty(),
                 qPrintable(name + QLatin1Char('\n') + dropped.join(QLatin1Char('\n'))));
    }
}

void TestMergeLaws::everyRealMergeIsSoundEitherWay()
{
    const auto triples = realTriples();
    for (qsizetype i = 0; i < triples.size(); i += 5) {
        const auto &[name, all] = triples[i];
        const auto plan = planMerge(all.inputs());
        for (const auto *const side : {"from", "into"}) {
            const auto merged = applyMerge(all.inputs(), everything(plan, side));
            QVERIFY2(merged, qPrintable(name + (merged ? QString() : merged.error().message)));
            QCOMPARE(violations(merged->file), QStringList());
        }
        const auto kept = applyMerge(all.inputs(), {});
        QVERIFY(kept && kept->file == all.into);
    }
}

void TestMergeLaws::takingAllOfARealSaveGivesItsMusic()
{
    auto pairs = realPairs();
    const auto own = ownHistory();
    for (qsizetype i = 1; i < own.size(); ++i) {
        pairs.append({own[i - 1], own[i]});
    }
    for (const auto &[before, after] : pairs) {
        for (const auto &[base, from] : {std::pair{before, after}, std::pair{after, before}}) {
            const Triple all{readFile(base), readFile(base), readFile(from)};
            const auto plan = planMerge(all.inputs());
            const auto merged = applyMerge(all.inputs(), everything(plan));
            QVERIFY2(merged, qPrintable(from + (merged ? QString() : merged.error().message)));
            QVERIFY(!plan.fallbacks.isEmpty() ||
                    essence(music(merged->file)) == essence(music(all.from)));
        }
    }
}

QTEST_APPLESS_MAIN(TestMergeLaws)
#include "tst_merge_laws.moc"
