#include "Records.h"
#include "StoreFixture.h"
#include "StoreModel.h"

#include <QAbstractEventDispatcher>
#include <QTest>
#include <QThread>

#include <atomic>
#include <random>

using namespace ostra;
using namespace std::chrono_literals;

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr int kSteps = 20'000; // ten times slower there
#else
constexpr int kSteps = 100'000;
#endif

const QString kProject = QStringLiteral("/music/Band");

QString toText(const StoreModel::View &view)
{
    QStringList sleeps;
    for (const auto sleep : view.sleeps) {
        sleeps += QString::number(sleep.count());
    }
    return QStringLiteral("states [%1] lastError [%2] lastActionError [%3] log [%4] project [%5] "
                          "sleeps [%6] ")
               .arg(view.states.join(u' '), view.lastError, view.lastActionError,
                    view.log.join(u'|'), view.project, sleeps.join(u' ')) +
           QStringLiteral("status %1 acts %2 shutdowns %3 accepted %4 open %5 launches %6 "
                          "terminations %7 ends %8 saves %9 ")
               .arg(view.statusRequests)
               .arg(view.acts)
               .arg(view.shutdowns)
               .arg(view.accepted)
               .arg(view.open)
               .arg(view.launches)
               .arg(view.processTerminations)
               .arg(view.ends)
               .arg(view.saves) +
           QStringLiteral("returned %1").arg(view.returned);
}

/// The real store in its world, and what can be seen of it.
class Reality {
public:
    Reality()
    {
        const auto count = [this](std::atomic<int> &counter, auto answer) {
            return [this, &counter, answer](const QJsonObject &) {
                // Counted last: the count lets the test go on to change what was read here.
                const bool held = m_holding;
                Answer made = answer(counter + 1);
                made.held = held;
                ++counter;
                m_main->wakeUp();
                return made;
            };
        };
        // Each report differs, so that it can be seen to arrive.
        world.service.answer(kStatus, count(m_statusRequests, [](int report) {
                                 QJsonObject record = repoRecord(kProject);
                                 record.insert(QStringLiteral("head_message"),
                                               QString::number(report));
                                 return statusAnswer({record});
                             }));
        world.service.answer(QStringLiteral("act"),
                             count(m_acts, [](int) { return Answer::ok(); }));
        world.service.answer(QStringLiteral("shutdown"),
                             count(m_shutdowns, [](int) { return Answer::ok(); }));
        QObject::connect(world.state.get(), &DaemonState::saveDetected, world.state.get(),
                         [this] { ++m_saves; });
    }

    void setHolding(bool holding) { m_holding = holding; }
    void setLaunch(StoreModel::Launch launch)
    {
        using Launch = StoreModel::Launch;
        world.launcher.existing =
            launch == Launch::missing ? QSet<QString>{} : QSet<QString>{world.helper()};
        world.launcher.launchError =
            launch == Launch::fails ? std::optional(QStringLiteral("no")) : std::nullopt;
        world.launcher.onLaunch = nullptr;
        if (launch == Launch::listens) {
            world.launcher.onLaunch = [this] {
                world.service.start();
            };
        }
    }
    void refreshAll() { countReturn(world.state->refreshAll(), &m_returned); }
    void perform(DaemonState::Refresh refresh)
    {
        countReturn(
            world.state->perform({.cmd = QStringLiteral("act")}, QStringLiteral("Act"), refresh),
            &m_returned);
    }

    StoreModel::View view() const
    {
        const DaemonState &state = *world.state;
        StoreModel::View view;
        for (const QString &entry : world.trace) {
            view.states += entry.section(u' ', 1);
        }
        view.lastError = state.lastErrorText();
        view.lastActionError = state.lastActionErrorText();
        view.log = world.log;
        for (const RepoViewModel &repo : state.repos()) {
            view.project += QStringLiteral("%1 %2").arg(repo.headMessage).arg(repo.lastDeltaCount);
        }
        view.sleeps = world.scheduler.delays(QThread::currentThread());
        view.statusRequests = m_statusRequests;
        view.acts = m_acts;
        view.shutdowns = m_shutdowns;
        view.accepted = world.service.accepted();
        view.open = world.service.open();
        view.launches = static_cast<int>(world.launcher.launches().size());
        view.processTerminations = world.launcher.terminations();
        view.ends = world.terminations;
        view.saves = m_saves;
        view.returned = m_returned;
        return view;
    }

    StoreFixture world;

private:
    static QCoro::Task<> countReturn(QCoro::Task<> task, int *returned)
    {
        co_await task;
        ++*returned;
    }

    const QString kStatus = QStringLiteral("status");
    QAbstractEventDispatcher *const m_main = QAbstractEventDispatcher::instance();
    std::atomic<int> m_statusRequests = 0;
    std::atomic<int> m_acts = 0;
    std::atomic<int> m_shutdowns = 0;
    std::atomic<bool> m_holding = false;
    int m_saves = 0;
    int m_returned = 0;
};

/// Does the same to the store and to the model, step by step, and compares them.
class Walk {
public:
    explicit Walk(std::mt19937 &random)
        : m_random(random), m_model(m_reality.world.home(), m_reality.world.scheduler.now())
    {
    }

    /// One step; empty when the store did as the model.
    QString step()
    {
        const QString name = act();
        return agree() ? QString()
                       : QStringLiteral("after %1\n  expected %2\n  found    %3")
                             .arg(name, toText(m_model.view), toText(m_reality.view()));
    }

private:
    int pick(int below) { return std::uniform_int_distribution<int>(0, below - 1)(m_random); }

    QString act()
    {
        StoreFixture &world = m_reality.world;
        switch (pick(19)) {
        case 0:
            world.state->start();
            m_model.start();
            return QStringLiteral("start");
        case 1:
            world.state->retry();
            m_model.retry();
            return QStringLiteral("retry");
        case 2:
        case 3:
            return listenOrNot();
        case 4:
            world.service.closeConnections();
            m_model.dropConnections();
            return QStringLiteral("drop");
        case 5:
        case 6:
            if (m_model.isWaiting()) {
                // Answers at full speed would let it depend on luck what is still running.
                return release();
            }
            m_model.holding = !m_model.holding;
            m_reality.setHolding(m_model.holding);
            return QStringLiteral("hold or not");
        case 7:
        case 8:
            return release();
        case 9:
        case 10:
            m_reality.refreshAll();
            m_model.refreshAll();
            return QStringLiteral("refresh");
        case 11:
            m_reality.perform(DaemonState::Refresh::no);
            m_model.perform(StoreModel::Request::act);
            return QStringLiteral("act");
        case 12:
            m_reality.perform(DaemonState::Refresh::yes);
            m_model.perform(StoreModel::Request::actAndRefresh);
            return QStringLiteral("act and refresh");
        case 13:
        case 14:
            return push();
        case 15:
            world.state->quit();
            m_model.quit();
            return QStringLiteral("quit");
        case 16:
            m_model.launch = static_cast<StoreModel::Launch>(pick(4));
            m_reality.setLaunch(m_model.launch);
            return QStringLiteral("launch or not");
        default:
            return letTimePass();
        }
    }

    QString listenOrNot()
    {
        if (m_model.listening) {
            m_reality.world.service.stop();
            m_model.stopListening();
            return QStringLiteral("stop listening");
        }
        m_reality.world.service.start();
        m_model.listening = true;
        return QStringLiteral("listen");
    }

    QString release()
    {
        m_reality.world.service.release();
        m_model.release();
        return QStringLiteral("release");
    }

    QString push()
    {
        if (pick(4) == 0) {
            // No two alike: one that is shown already could not be seen to arrive, and would come
            // in the middle of the next step.
            const QString message = QStringLiteral("error %1").arg(++m_errors);
            m_reality.world.service.push(R"({"event":"error","message":")" + message.toUtf8() +
                                         "\"}");
            m_model.pushError(message);
            return QStringLiteral("push an error");
        }
        const int number = pick(1000);
        m_reality.world.service.push(saveEvent(QStringLiteral("Band"), kProject, number));
        m_model.pushSave(number);
        return QStringLiteral("push a save");
    }

    QString letTimePass()
    {
        auto left = std::chrono::nanoseconds(std::chrono::milliseconds(pick(40'000)));
        while (left > 0ns) {
            const std::optional<StoreModel::Duration> next = m_model.nextMoment();
            const auto part = next ? std::min(left, *next - m_model.now()) : left;
            m_reality.world.scheduler.advance(part);
            m_model.advance(part);
            left -= part;
            if (!agree()) {
                break;
            }
        }
        return QStringLiteral("time");
    }

    bool agree()
    {
        const bool agreed = until([this] { return m_reality.view() == m_model.view; });
        if (agreed) {
            m_reality.world.trace.clear();
            m_reality.world.log.clear();
            m_model.view.states.clear();
            m_model.view.log.clear();
        }
        return agreed;
    }

    std::mt19937 &m_random;
    Reality m_reality;
    StoreModel m_model;
    int m_errors = 0;
};

} // namespace

/// Does whatever can be done to a store in any order, and expects of it what a few simple rules
/// say. OSTRA_SEED replays a run; OSTRA_STEPS makes it longer or shorter.
class DaemonStateRandomTest : public QObject {
    Q_OBJECT

private slots:
    void doesAsTheModelInAnyOrder();
};

void DaemonStateRandomTest::doesAsTheModelInAnyOrder()
{
    const auto seed = qEnvironmentVariableIsSet("OSTRA_SEED")
                          ? qEnvironmentVariable("OSTRA_SEED").toUInt()
                          : std::random_device{}();
    const int steps = qEnvironmentVariableIsSet("OSTRA_STEPS")
                          ? qEnvironmentVariableIntValue("OSTRA_STEPS")
                          : kSteps;
    qInfo("OSTRA_SEED=%u OSTRA_STEPS=%d", seed, steps);
    std::mt19937 random(seed);
    // Worlds end in the middle of whatever goes on.
    auto walk = std::make_unique<Walk>(random);
    for (int step = 0; step < steps; ++step) {
        if (random() % 500 == 0) {
            walk.reset();
            walk = std::make_unique<Walk>(random);
        }
        const QString difference = walk->step();
        QVERIFY2(difference.isEmpty(),
                 qPrintable(QStringLiteral("step %1 %2").arg(step).arg(difference)));
    }
}

QTEST_GUILESS_MAIN(DaemonStateRandomTest)
#include "tst_daemon_state_random.moc"
