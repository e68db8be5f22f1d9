#include "DaemonClient.h"

#include "DaemonClientContext.h"
#include "EventChannel.h"

#include <QDir>
#include <QThread>

#include <csignal>
#include <future>

namespace ostra {

namespace {

DaemonClient::Error mergeError(const IPCResponse &reply)
{
    using MergeError = DaemonClient::MergeError;
    if (const auto *error = std::get_if<Reply::Error>(&reply)) {
        return MergeError{MergeError::Kind::daemonError, error->message};
    }
    return MergeError{MergeError::Kind::unexpectedResponse, {}};
}

} // namespace

class DaemonClient::Thread final : public QThread {
public:
    void waitForEnd()
    {
        m_ended.get_future().wait();
        wait();
    }

protected:
    void run() override
    {
        // Writing to a service that has gone is an error to handle, not a reason to end.
        sigset_t brokenPipe;
        sigemptyset(&brokenPipe);
        sigaddset(&brokenPipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
        exec();
        m_ended.set_value();
    }

private:
    std::promise<void> m_ended;
};

QString DaemonClient::description(const Error &error)
{
    if (const auto *client = std::get_if<ClientError>(&error)) {
        switch (*client) {
        case ClientError::notConnected:
            return QStringLiteral("Not connected to daemon");
        case ClientError::disconnected:
            return QStringLiteral("Connection to daemon lost");
        case ClientError::timeout:
            return QStringLiteral("Request timed out");
        }
    }
    if (const auto *merge = std::get_if<MergeError>(&error)) {
        return merge->kind == MergeError::Kind::daemonError
                   ? merge->message
                   : QStringLiteral("Unexpected daemon response");
    }
    return std::get<DecodingError>(error).description();
}

DaemonClient::DaemonClient(Scheduler &scheduler, std::optional<QString> socketPath)
    : m_context(std::make_unique<Context>(
          scheduler,
          socketPath.value_or(QDir::homePath() + QStringLiteral("/.ostra/daemon.sock")))),
      m_thread(std::make_unique<Thread>())
{
    m_thread->setObjectName(QStringLiteral("ostra-client"));
    m_context->moveToThread(m_thread.get());
    m_thread->start();
}

DaemonClient::~DaemonClient()
{
    m_context->announceStop();
    m_context->post([this] {
        m_context->stop();
        m_thread->quit();
    });
    m_thread->waitForEnd();
}

QCoro::Task<bool> DaemonClient::connect()
{
    const auto outcome = Handoff<bool>::make();
    m_context->post([context = m_context.get(), attempt = m_context->announceAttempt(), outcome] {
        Handoff<bool>::resolve(outcome, context->connect(attempt));
    });
    co_return co_await outcome->value();
}

bool DaemonClient::isConnected() const
{
    return m_context->isConnected();
}

void DaemonClient::setOnStateChange(std::function<void(bool)> onStateChange)
{
    m_context->post(
        [context = m_context.get(), onStateChange = std::move(onStateChange)]() mutable {
            context->setOnStateChange(std::move(onStateChange));
        });
}

void DaemonClient::setTrace(Trace trace)
{
    m_context->post([context = m_context.get(), trace = std::move(trace)]() mutable {
        context->setTrace(std::move(trace));
    });
}

QCoro::Task<DaemonClient::Result<IPCResponse>> DaemonClient::send(IPCCommand command)
{
    const Context::Waiter waiter = Context::Waiter::element_type::make();
    m_context->post([context = m_context.get(), command = std::move(command), waiter] {
        context->send(command, waiter);
    });
    co_return co_await waiter->value();
}

EventStream DaemonClient::eventStream()
{
    auto channel = std::make_shared<EventStream::Channel>();
    m_context->post([context = m_context.get(), channel] { context->setEventChannel(channel); });
    return EventStream(std::move(channel));
}

QCoro::Task<DaemonClient::Result<PendingMergeState>> DaemonClient::mergePending(QString repo)
{
    IPCCommand command{.cmd = QStringLiteral("merge_pending"), .repo = std::move(repo)};
    const Result<IPCResponse> reply = co_await send(std::move(command));
    if (!reply) {
        co_return tl::unexpected(reply.error());
    }
    if (const auto *state = std::get_if<PendingMergeState>(&*reply)) {
        co_return *state;
    }
    co_return tl::unexpected(mergeError(*reply));
}

QCoro::Task<DaemonClient::Result<void>> DaemonClient::mergeAbort(QString repo)
{
    IPCCommand command{.cmd = QStringLiteral("merge_abort"), .repo = std::move(repo)};
    const Result<IPCResponse> reply = co_await send(std::move(command));
    if (!reply) {
        co_return tl::unexpected(reply.error());
    }
    if (std::holds_alternative<Reply::Ok>(*reply)) {
        co_return Result<void>();
    }
    co_return tl::unexpected(mergeError(*reply));
}

} // namespace ostra
