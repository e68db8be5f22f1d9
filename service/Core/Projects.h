#pragma once

#include "Core/HistoryReader.h"
#include "Core/Project.h"
#include "Core/Settings.h"
#include "Core/Strand.h"
#include "Models/Command.h"
#include "Protocol/CommandServer.h"
#include "Watch/FolderWatch.h"

#include <QHash>
#include <QObject>
#include <QThread>
#include <QThreadPool>
#include <QTimer>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

namespace ostra {

/// All projects: which are tracked, which were found, where they are, and whose work runs where.
/// Lives on the main thread and never waits: everything that touches a disk runs on a project's
/// own strand or on the watching thread, and what is known is answered from memory.
class Projects : public QObject {
    Q_OBJECT

public:
    struct Options {
        QString home;                   ///< looked through for projects
        QString settingsPath;           ///< what is remembered between runs
        std::optional<int> packAfterMs; ///< without it: when the machine is idle
    };

    explicit Projects(Options options, QObject *parent = nullptr);
    ~Projects() override;

    void start();
    /// Lets running jobs end; nothing is recorded afterwards.
    void stop();

    // Answers. All of them respond exactly once.
    void status(Responder respond);
    void rescan(const Responder &respond);
    void init(const QString &path, const Responder &respond);
    void addWatchPath(const QString &path, const Responder &respond);
    void removeWatchPath(const QString &path, const Responder &respond);
    void renameProject(const IPCCommand &command, const Responder &respond);
    QStringList watchPaths() const { return m_settings.watchPaths; }

    using Write = std::function<Outcome<IPCResponse>(Project &)>;
    using Read = std::function<Outcome<IPCResponse>(HistoryReader &, const SongSnapshot &)>;
    /// Runs on the project that the command names, after what was asked of it before.
    void write(const IPCCommand &command, const Responder &respond, Write work);
    /// Runs on the song that the command names, without waiting for recordings.
    void read(const IPCCommand &command, const Responder &respond, Read work);
    /// The same in two steps: reads what it needs, then thinks about it while others read.
    using Thought = std::function<IPCResponse()>;
    using ReadFirst = std::function<Outcome<Thought>(HistoryReader &, const SongSnapshot &)>;
    void think(const IPCCommand &command, const Responder &respond, ReadFirst work);
    /// What is known of the project that the command names, or nothing after an error reply.
    std::shared_ptr<const ProjectSnapshot> snapshot(const IPCCommand &command,
                                                    const Responder &respond) const;

signals:
    void eventHappened(const ostra::DaemonEvent &event);

private:
    struct Tracked;
    using TrackedPtr = std::shared_ptr<Tracked>;
    enum class Origin { remembered, wanted };

    TrackedPtr find(const IPCCommand &command) const;
    using Reading = std::function<void(HistoryReader &, const SongSnapshot &)>;
    void postReading(const IPCCommand &command, const Responder &respond, Reading job);
    TrackedPtr at(const QString &path) const;
    TrackedPtr add(const KnownProject &known);
    void track(const QString &path, const std::optional<Responder> &respond);
    void load(const TrackedPtr &tracked, Origin origin, const std::optional<Responder> &respond);
    void loaded(const TrackedPtr &tracked, const Outcome<void> &outcome,
                const std::optional<Responder> &respond);
    bool isStarting() const;
    void remove(const TrackedPtr &tracked);
    void apply(const TrackedPtr &tracked, ProjectSnapshot snapshot);
    void makeUnique(const TrackedPtr &tracked);
    QString uniqueName(const QString &name, const Tracked *except) const;

    void settled(const QString &setPath);
    void record(const TrackedPtr &tracked, const QString &file);
    void recorded(const TrackedPtr &tracked, const QString &file,
                  const Outcome<Project::Recorded> &outcome);
    void gone(const QString &setPath);
    void projectGone(const QString &folder);
    void projectBack(const QString &folder);
    void found(const QList<FoundProject> &projects);
    bool relocate(const FoundProject &project,
                  const std::optional<Responder> &respond = std::nullopt);
    void announceMissing();

    void watchProjects();
    void startScan();
    void scanned(const QList<FoundProject> &projects);
    void forgetDiscovered(const QString &path);
    void answerStatus(const Responder &respond);
    void answerWaiting();
    void problem(const QString &message);
    void save();
    void busy();
    void idle();
    void trim();
    void tidy();
    void pack(const TrackedPtr &tracked);
    void packLoose(const TrackedPtr &tracked, const QString &folder);
    void repack(const TrackedPtr &tracked, const QString &folder);
    void packed(const TrackedPtr &tracked);
    bool isBelowWatchPath(const QString &path) const;
    /// Runs on the main thread, unless this is being destroyed.
    void later(std::function<void()> job);

    Options m_options;
    Settings m_settings;
    Settings m_saved; ///< as they are on the disk
    QList<TrackedPtr> m_tracked;
    QThreadPool m_writers;
    QThreadPool m_readers;
    QThreadPool m_thinkers; ///< for seconds, so that no reading waits for them
    QThreadPool m_packer;
    QThread m_watchThread;
    FolderWatch *m_watch = nullptr;
    std::atomic<bool> m_isStopping = false;

    QList<Responder> m_waitingForStatus;
    QList<Responder> m_waitingForScan;
    QHash<QString, QList<Responder>> m_waitingForRoot;
    bool m_isScanning = false;

    QHash<QString, QString> m_troubles; ///< set path → what the user was told about it last
    QHash<QString, int> m_retryMs;      ///< set path → wait before the next attempt
    QTimer m_idle;
    QTimer m_trim; ///< memory goes back to the system when everybody rests
    QTimer m_tidy; ///< packing begins when this has been left alone
    QTimer m_daily;
    QTimer m_missing;
};

} // namespace ostra
