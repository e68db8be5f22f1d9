#pragma once

#include "DaemonState.h"

#include <deque>

namespace ostra {

/// What a store must do, in a few rules: no threads, no sockets, no coroutines. Everything that is
/// asked of it happens at once; only time and held answers make it wait.
class StoreModel {
public:
    using Duration = Scheduler::Duration;
    using State = DaemonState::ConnectionState;
    enum class Launch { missing, fails, works, listens };
    enum class Request { status, act, actAndRefresh, shutdown };

    StoreModel(QString home, Duration now) : m_now(now), m_home(std::move(home)) {}

    // The world around the store.
    bool listening = false;
    bool holding = false;
    Launch launch = Launch::missing;

    void stopListening();
    void dropConnections();
    void release();
    void pushSave(int deltaCount);
    void pushError(const QString &message);

    /// The next moment at which something happens by itself.
    std::optional<Duration> nextMoment() const;
    /// Lets time pass; to the next moment at most.
    void advance(Duration duration);

    // What is asked of the store.
    void start();
    void retry();
    void refreshAll();
    void perform(Request request);
    void quit();

    Duration now() const { return m_now; }
    /// Whether a request waits for its answer.
    bool isWaiting() const { return !m_pending.empty(); }

    /// What can be seen from outside, as text.
    struct View {
        QStringList states; ///< since the last look
        QString lastError;
        QString lastActionError;
        QStringList log; ///< since the last look
        QString project; ///< which report of the service it shows, and its delta count
        QList<Duration> sleeps;
        int statusRequests = 0;
        int acts = 0;
        int shutdowns = 0;
        int accepted = 0;
        int open = 0;
        int launches = 0;
        int processTerminations = 0;
        int ends = 0;
        int saves = 0;
        int returned = 0;
        bool operator==(const View &) const = default;
    };
    View view;

private:
    enum class Waiter { connectionHandler, caller, nobody };
    struct Pending {
        Request request;
        Duration deadline;
        int report; ///< of a status request: how many there were
    };

    void setState(State state);
    void connect();
    void loseConnection(const QString &errorOfTheOldest);
    void failPending(QString errorOfTheOldest);
    void onConnected();
    void onConnectionFailed();
    bool spawn();
    void sleepBeforeReconnect(Duration delay);
    void send(Request request);
    void finish(const Pending &pending, const std::optional<QString> &error);
    void requestRefresh(Waiter waiter);
    void doRefresh();
    void refreshEnded();
    void refreshReturns(Waiter waiter);
    void noteProject(int report);

    Duration m_now;
    const QString m_home;
    State m_state = State::disconnected;
    bool m_clientConnected = false;
    bool m_hears = false;
    bool m_attemptedSpawn = false;
    bool m_hasProcess = false;
    std::optional<Duration> m_delay; ///< of the reconnect loop
    Duration m_wakesAt{};
    bool m_refreshing = false;
    bool m_queued = false;
    Waiter m_owner = Waiter::nobody;
    std::vector<Waiter> m_waiters;
    std::deque<Pending> m_pending;
    std::optional<int> m_report;
    int m_deltaCount = 0;
};

} // namespace ostra
