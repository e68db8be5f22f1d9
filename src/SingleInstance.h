#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QFile>
#include <QLocalServer>
#include <QObject>

namespace ostra {

/// One client per home folder. The first start holds a lock beside the service's socket and
/// listens; a later one hands over its wish to be shown and ends. Main thread only.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    enum class Start { first, handedOver, unreachable };

    /// `folder` is made when missing (0700). Where it cannot be written this start counts as the
    /// first: better two windows than none.
    explicit SingleInstance(const QString &folder, QObject *parent = nullptr);

    /// Takes the lock, or asks the holder to show itself and waits at most `patience` for its
    /// answer, or for its end: then this is the first. `activationToken` is the one that the
    /// desktop gave this start, or empty.
    Start start(const QByteArray &activationToken,
                std::chrono::milliseconds patience = std::chrono::seconds(5));

signals:
    /// Another start asks this one to be shown.
    void showRequested(const QByteArray &activationToken);

private:
    bool askHolder(const QByteArray &activationToken, QDeadlineTimer deadline) const;
    void answer();

    QString m_socketPath;
    QFile m_lock; ///< the system releases it with the process, however that ends
    QLocalServer m_server;
};

} // namespace ostra
