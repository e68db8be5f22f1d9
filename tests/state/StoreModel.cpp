#include "StoreModel.h"

#include <QMetaEnum>

namespace ostra {

using namespace std::chrono_literals;

void StoreModel::setState(State state)
{
    if (m_state != state) {
        m_state = state;
        view.states +=
            QString::fromLatin1(QMetaEnum::fromType<State>().valueToKey(static_cast<int>(state)));
    }
}

void StoreModel::stopListening()
{
    listening = false;
    dropConnections();
}

void StoreModel::dropConnections()
{
    if (m_clientConnected) {
        loseConnection(QStringLiteral("Connection to daemon lost"));
    }
}

void StoreModel::loseConnection(const QString &errorOfTheOldest)
{
    m_clientConnected = false;
    m_hears = false;
    view.open = 0;
    failPending(errorOfTheOldest);
    onConnectionFailed();
}

void StoreModel::failPending(QString error)
{
    for (const Pending &pending : std::exchange(m_pending, {})) {
        finish(pending, error);
        error = QStringLiteral("Connection to daemon lost");
    }
}

void StoreModel::release()
{
    // What the answers set off is held again.
    for (const Pending &pending : std::exchange(m_pending, {})) {
        finish(pending, std::nullopt);
    }
}

void StoreModel::pushSave(int deltaCount)
{
    if (!m_hears) {
        return;
    }
    ++view.saves;
    if (m_report) {
        m_deltaCount = deltaCount;
        noteProject(*m_report);
    }
    requestRefresh(Waiter::nobody);
}

void StoreModel::pushError(const QString &message)
{
    if (m_hears) {
        view.lastActionError = message;
    }
}

std::optional<StoreModel::Duration> StoreModel::nextMoment() const
{
    if (m_delay) {
        return m_wakesAt;
    }
    return m_pending.empty() ? std::nullopt : std::optional(m_pending.front().deadline);
}

void StoreModel::advance(Duration duration)
{
    m_now += duration;
    if (m_delay && m_now >= m_wakesAt) {
        setState(State::connecting);
        connect();
        if (!m_clientConnected) {
            sleepBeforeReconnect(std::min<Duration>(2 * *m_delay, 30s));
        }
    } else if (!m_pending.empty() && m_now >= m_pending.front().deadline) {
        loseConnection(QStringLiteral("Request timed out"));
    }
    view.sleeps = m_delay ? QList<Duration>{m_wakesAt - m_now} : QList<Duration>{};
}

void StoreModel::start()
{
    if (m_state == State::disconnected) {
        setState(State::connecting);
        connect();
    }
}

void StoreModel::retry()
{
    m_delay.reset();
    view.sleeps.clear();
    m_attemptedSpawn = false;
    view.lastError.clear();
    setState(State::disconnected);
    start();
}

void StoreModel::refreshAll()
{
    requestRefresh(Waiter::caller);
}

void StoreModel::perform(Request request)
{
    view.lastActionError.clear();
    send(request);
}

void StoreModel::quit()
{
    send(Request::shutdown);
}

void StoreModel::connect()
{
    m_hears = false;
    m_clientConnected = listening;
    view.open = listening ? 1 : 0;
    view.accepted += listening ? 1 : 0;
    failPending(QStringLiteral("Connection to daemon lost"));
    if (m_clientConnected) {
        onConnected();
    } else {
        onConnectionFailed();
    }
}

void StoreModel::onConnected()
{
    setState(State::connected);
    m_attemptedSpawn = false;
    view.lastError.clear();
    m_delay.reset();
    view.sleeps.clear();
    requestRefresh(Waiter::connectionHandler);
}

void StoreModel::onConnectionFailed()
{
    const bool isFirst = m_state == State::connecting && !m_attemptedSpawn;
    Duration delay = 2s;
    if (isFirst) {
        m_attemptedSpawn = true;
        delay = spawn() ? 500ms : 2s;
    }
    if (!m_delay) {
        sleepBeforeReconnect(delay);
    }
    setState(State::disconnected);
}

void StoreModel::sleepBeforeReconnect(Duration delay)
{
    m_delay = delay;
    m_wakesAt = m_now + delay;
    view.sleeps = {delay};
}

bool StoreModel::spawn()
{
    switch (launch) {
    case Launch::missing:
        view.lastError =
            QStringLiteral("ostra-daemon not found. Looked in: /helpers/ostra-daemon, "
                           "%1/.cargo/bin/ostra-daemon, /opt/homebrew/bin/ostra-daemon, "
                           "/usr/local/bin/ostra-daemon, %1/.local/bin/ostra-daemon.")
                .arg(m_home);
        return false;
    case Launch::fails:
        ++view.launches;
        view.lastError = QStringLiteral("Failed to launch ostra-daemon: no");
        return false;
    case Launch::listens:
        listening = true;
        [[fallthrough]];
    case Launch::works:
        ++view.launches;
        m_hasProcess = true;
        return true;
    }
    return false;
}

void StoreModel::send(Request request)
{
    if (!m_clientConnected) {
        finish({request, {}, 0}, QStringLiteral("Not connected to daemon"));
        return;
    }
    view.statusRequests += request == Request::status ? 1 : 0;
    const Pending pending{request, m_now + 15s, view.statusRequests};
    view.shutdowns += request == Request::shutdown ? 1 : 0;
    view.acts += request == Request::act || request == Request::actAndRefresh ? 1 : 0;
    if (holding) {
        m_pending.push_back(pending);
    } else {
        finish(pending, std::nullopt);
    }
}

void StoreModel::finish(const Pending &pending, const std::optional<QString> &error)
{
    switch (pending.request) {
    case Request::status:
        if (error) {
            view.log += QStringLiteral("Failed to refresh: ") + *error;
        } else {
            noteProject(pending.report);
        }
        refreshEnded();
        return;
    case Request::act:
    case Request::actAndRefresh:
        if (error) {
            view.lastActionError = QStringLiteral("Act failed: ") + *error;
        }
        if (!error && pending.request == Request::actAndRefresh) {
            requestRefresh(Waiter::caller);
        } else {
            ++view.returned;
        }
        return;
    case Request::shutdown:
        view.processTerminations += m_hasProcess ? 1 : 0;
        ++view.ends;
        return;
    }
}

void StoreModel::noteProject(int report)
{
    m_report = report;
    view.project = QStringLiteral("%1 %2").arg(report).arg(m_deltaCount);
}

void StoreModel::requestRefresh(Waiter waiter)
{
    if (m_refreshing) {
        m_queued = true;
        m_waiters.push_back(waiter);
        return;
    }
    m_owner = waiter;
    doRefresh();
}

void StoreModel::doRefresh()
{
    m_refreshing = true;
    m_queued = false;
    if (m_state == State::connected) {
        send(Request::status);
    } else {
        refreshEnded();
    }
}

/// Those who asked in the meantime return; the one who began stays for what they asked for.
void StoreModel::refreshEnded()
{
    m_refreshing = false;
    const std::vector<Waiter> waiters = std::exchange(m_waiters, {});
    if (m_queued) {
        doRefresh();
    } else {
        refreshReturns(m_owner);
    }
    for (const Waiter waiter : waiters) {
        refreshReturns(waiter);
    }
}

void StoreModel::refreshReturns(Waiter waiter)
{
    if (waiter == Waiter::caller) {
        ++view.returned;
    } else if (waiter == Waiter::connectionHandler) {
        m_hears = m_clientConnected;
    }
}

} // namespace ostra
