#include "Core/Projects.h"

#include "Core/Log.h"
#include "Protocol/ReplyEncoder.h"
#include "Store/Packer.h"
#include "Store/ProjectFile.h"

#include <QDir>
#include <QFileInfo>
#include <QPointer>

#include <algorithm>
#include <cstdlib>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace ostra {

namespace {

// Replies that could take long are sent before a client gives up on them (15 s).
constexpr int kLongestScanReplyMs = 10'000;
constexpr int kLongestRootReplyMs = 5'000;
constexpr int kLongestStatusWaitMs = 5'000;
// A folder that was moved disappears in one place before it is seen in the other.
constexpr int kMissingAfterMs = 5'000;
// How long a file may be no whole set before the musician hears of it.
constexpr int kNotWholeAfterMs = 2'000;
constexpr int kFirstRetryMs = 30'000;
constexpr int kLongestRetryMs = 600'000;
constexpr qint64 kTrashKeptSeconds = 30LL * 24 * 3600;
constexpr int kPackAfterMs = 60'000;
constexpr int kDayMs = 24 * 3600 * 1000;
constexpr int kBusyMachineMs = 300'000;
constexpr qint64 kInitRecordingMs = 5'000;

QString folderOf(const QString &path)
{
    return path.first(path.lastIndexOf(u'/'));
}

QString fileOf(const QString &path)
{
    return path.sliced(path.lastIndexOf(u'/') + 1);
}

Outcome<QString> checkedFolder(const QString &path)
{
    if (!path.startsWith(u'/') || path.contains(QChar(u'\0'))) {
        return failure(QStringLiteral("A folder needs its full path."));
    }
    QString folder = QDir::cleanPath(path);
    if (!QFileInfo(folder).isDir()) {
        return failure(QStringLiteral("There is no folder %1.").arg(folder.left(200)));
    }
    return folder;
}

} // namespace

/// A tracked project. The record belongs to the main thread; `project` is touched on `writing`
/// only and `reader` on `reading` only.
struct Projects::Tracked {
    KnownProject known;
    std::shared_ptr<Project> project;
    std::shared_ptr<HistoryReader> reader;
    std::unique_ptr<Strand> writing;
    std::unique_ptr<Strand> reading;
    std::shared_ptr<const ProjectSnapshot> snapshot;
    QByteArray json; ///< its part of the "status" reply
    bool isLoading = false;
    bool isNew = false;    ///< has not been loaded yet
    bool isHidden = false; ///< has nothing to show yet
    bool isMissing = false;
    bool isAnnounced = false; ///< the user knows that it is missing
    bool mayBePacked = true;  ///< something was written since it was last looked at
    bool isAwake = true;      ///< something was asked of it since it was last let rest
};

Projects::Projects(Options options, QObject *parent)
    : QObject(parent), m_options(std::move(options)), m_watch(new FolderWatch)
{
    m_writers.setMaxThreadCount(2);
    m_readers.setMaxThreadCount(2);
    m_thinkers.setMaxThreadCount(2);
    for (QThreadPool *pool : {&m_writers, &m_readers, &m_thinkers}) {
        pool->setExpiryTimeout(10'000);
    }
    m_watch->moveToThread(&m_watchThread);
    connect(&m_watchThread, &QThread::finished, m_watch, &QObject::deleteLater);
    connect(m_watch, &FolderWatch::settled, this, &Projects::settled);
    connect(m_watch, &FolderWatch::gone, this, &Projects::gone);
    connect(m_watch, &FolderWatch::projectGone, this, &Projects::projectGone);
    connect(m_watch, &FolderWatch::projectBack, this, &Projects::projectBack);
    connect(m_watch, &FolderWatch::projectAppeared, this,
            [this](const FoundProject &project) { relocate(project); });
    connect(m_watch, &FolderWatch::rootScanned, this,
            [this](const QString &root, const QList<FoundProject> &projects) {
                found(projects);
                for (const Responder &respond : m_waitingForRoot.take(root)) {
                    respond(Reply::Ok{});
                }
            });
    connect(m_watch, &FolderWatch::exhausted, this, [this] {
        problem(
            QStringLiteral("The system allows no more folders to be watched, so some saves will "
                           "not be noticed. Watch a smaller folder."));
    });
    m_idle.setSingleShot(true);
    m_idle.setInterval(2'000);
    connect(&m_idle, &QTimer::timeout, this, &Projects::idle);
    m_trim.setSingleShot(true);
    m_trim.setInterval(500);
    connect(&m_trim, &QTimer::timeout, this, &Projects::trim);
    m_tidy.setSingleShot(true);
    m_tidy.setInterval(m_options.packAfterMs.value_or(kPackAfterMs));
    connect(&m_tidy, &QTimer::timeout, this, &Projects::tidy);
    m_daily.setInterval(kDayMs);
    connect(&m_daily, &QTimer::timeout, this, [this] { // the trash ages also where nobody works
        for (const TrackedPtr &tracked : std::as_const(m_tracked)) {
            tracked->mayBePacked = true;
        }
        m_tidy.start();
    });
    m_daily.start();
    m_packer.setMaxThreadCount(1);
    m_packer.setThreadPriority(QThread::IdlePriority);
    m_missing.setSingleShot(true);
    m_missing.setInterval(kMissingAfterMs);
    connect(&m_missing, &QTimer::timeout, this, &Projects::announceMissing);
}

Projects::~Projects()
{
    stop();
}

void Projects::start()
{
    m_settings = Settings::load(m_options.settingsPath);
    m_saved = m_settings;
    m_watchThread.start();
    for (const KnownProject &known : QList(m_settings.projects)) {
        load(add(known), Origin::remembered, std::nullopt);
    }
    watchProjects();
    QMetaObject::invokeMethod(
        m_watch, [watch = m_watch, roots = m_settings.watchPaths] { watch->setRoots(roots); });
    if (!m_settings.hasScannedHome) {
        startScan();
    }
}

void Projects::stop()
{
    if (m_isStopping.exchange(true)) {
        return;
    }
    m_watchThread.quit();
    m_watchThread.wait();
    for (const TrackedPtr &tracked : m_tracked) { // jobs that have not begun are dropped
        tracked->writing.reset();
        tracked->reading.reset();
    }
    m_writers.waitForDone();
    m_readers.waitForDone();
    m_thinkers.clear();
    m_thinkers.waitForDone();
    m_packer.clear();
    m_packer.waitForDone();
}

// Answers.

void Projects::status(Responder respond)
{
    if (!isStarting()) {
        answerStatus(respond);
        return;
    }
    m_waitingForStatus.append(std::move(respond));
    QTimer::singleShot(kLongestStatusWaitMs, this, &Projects::answerWaiting);
}

void Projects::answerStatus(const Responder &respond)
{
    QList<QByteArray> repos;
    repos.reserve(m_tracked.size());
    for (const TrackedPtr &tracked : m_tracked) {
        if (!tracked->isHidden) {
            repos.append(tracked->json);
        }
    }
    QList<QByteArray> discovered;
    for (const DiscoveredProject &project : m_settings.discovered) {
        discovered.append(encodeDiscovered(project));
    }
    respond.line(joinStatus(repos, discovered));
}

void Projects::answerWaiting()
{
    for (const Responder &respond : std::exchange(m_waitingForStatus, {})) {
        answerStatus(respond);
    }
}

void Projects::rescan(const Responder &respond)
{
    m_waitingForScan.append(respond);
    QTimer::singleShot(kLongestScanReplyMs, this, [respond] { respond(Reply::Ok{}); });
    startScan();
}

void Projects::init(const QString &path, const Responder &respond)
{
    const auto folder = checkedFolder(path);
    if (!folder) {
        respond.error(folder.error().message);
    } else if (at(*folder)) {
        respond(Reply::Ok{});
    } else {
        const auto known = ProjectFile::load(*folder + QLatin1String("/.ostra/project.json"));
        if (!known || !relocate({*folder, {}, known->id}, respond)) {
            track(*folder, respond);
        }
    }
}

void Projects::addWatchPath(const QString &path, const Responder &respond)
{
    const auto folder = checkedFolder(path);
    if (!folder || *folder == QLatin1String("/")) {
        respond.error(folder ? QStringLiteral("Choose a folder, not the whole disk.")
                             : folder.error().message);
        return;
    }
    if (m_settings.watchPaths.contains(*folder)) {
        respond(Reply::Ok{});
        return;
    }
    m_settings.watchPaths.append(*folder);
    if (const auto saved = m_settings.save(m_options.settingsPath); !saved) {
        m_settings.watchPaths.removeLast();
        respond.error(saved.error().message);
        return;
    }
    m_saved = m_settings;
    m_waitingForRoot[*folder].append(respond);
    QTimer::singleShot(kLongestRootReplyMs, this, [respond] { respond(Reply::Ok{}); });
    QMetaObject::invokeMethod(
        m_watch, [watch = m_watch, roots = m_settings.watchPaths] { watch->setRoots(roots); });
}

void Projects::removeWatchPath(const QString &path, const Responder &respond)
{
    const auto index = m_settings.watchPaths.indexOf(QDir::cleanPath(path));
    if (index < 0) {
        respond.error(QStringLiteral("%1 is not watched.").arg(path.left(200)));
        return;
    }
    const QString folder = m_settings.watchPaths.takeAt(index);
    if (const auto saved = m_settings.save(m_options.settingsPath); !saved) {
        m_settings.watchPaths.insert(index, folder);
        respond.error(saved.error().message);
        return;
    }
    m_saved = m_settings;
    QMetaObject::invokeMethod(
        m_watch, [watch = m_watch, roots = m_settings.watchPaths] { watch->setRoots(roots); });
    respond(Reply::Ok{});
}

void Projects::renameProject(const IPCCommand &command, const Responder &respond)
{
    const QString to = command.to.value_or(QString()).trimmed();
    const TrackedPtr tracked = find(command);
    if (tracked && uniqueName(to, tracked.get()) != to) {
        respond.error(QStringLiteral("There already is a project “%1”.").arg(to));
        return;
    }
    write(command, respond, [to](Project &project) {
        return project.rename(to).map(
            [](const QString &name) { return IPCResponse(Reply::ProjectRenamed{name}); });
    });
}

void Projects::write(const IPCCommand &command, const Responder &respond, Write work)
{
    const TrackedPtr tracked = find(command);
    if (!tracked) {
        respond.error(QStringLiteral("There is no such project."));
        return;
    }
    tracked->mayBePacked = true;
    tracked->isAwake = true;
    tracked->writing->post([this, project = tracked->project, respond, work = std::move(work)] {
        const bool isThere = QFileInfo(project->folder()).isDir() && project->isLoaded();
        const auto outcome =
            isThere
                ? work(*project)
                : failure(
                      QStringLiteral("The project is not at %1 right now.").arg(project->folder()));
        later([respond, outcome] {
            outcome ? respond(*outcome) : respond.error(outcome.error().message);
        });
    });
    busy();
}

void Projects::read(const IPCCommand &command, const Responder &respond, Read work)
{
    postReading(
        command, respond,
        [this, respond, work = std::move(work)](HistoryReader &reader, const SongSnapshot &song) {
            const auto outcome = work(reader, song);
            const QByteArray line = encodeReply(
                outcome ? *outcome : IPCResponse(Reply::Error{outcome.error().message}));
            later([respond, line] { respond.line(line); });
        });
}

void Projects::think(const IPCCommand &command, const Responder &respond, ReadFirst work)
{
    postReading(
        command, respond,
        [this, respond, work = std::move(work)](HistoryReader &reader, const SongSnapshot &song) {
            auto thought = work(reader, song);
            if (!thought) {
                later([respond, message = thought.error().message] { respond.error(message); });
                return;
            }
            m_thinkers.start([this, respond, thought = std::move(*thought)] {
                const QByteArray line = encodeReply(thought());
                later([respond, line] { respond.line(line); });
            });
        });
}

void Projects::postReading(const IPCCommand &command, const Responder &respond, Reading job)
{
    const auto known = snapshot(command, respond);
    if (!known) {
        return;
    }
    const SongSnapshot *song = known->song(command.file.value_or(QString()));
    if (!song) {
        respond.error(QStringLiteral("There is no song “%1” in this project.")
                          .arg(command.file.value_or(QString()).left(80)));
        return;
    }
    const TrackedPtr tracked = find(command);
    tracked->isAwake = true;
    tracked->reading->post(
        [reader = tracked->reader, song = *song, job = std::move(job)] { job(*reader, song); });
    busy();
}

std::shared_ptr<const ProjectSnapshot> Projects::snapshot(const IPCCommand &command,
                                                          const Responder &respond) const
{
    const TrackedPtr tracked = find(command);
    if (!tracked) {
        respond.error(QStringLiteral("There is no such project."));
        return nullptr;
    }
    if (!tracked->snapshot) {
        respond.error(
            QStringLiteral("The project is not at %1 right now.").arg(tracked->known.path));
    }
    return tracked->snapshot;
}

// Tracking.

Projects::TrackedPtr Projects::find(const IPCCommand &command) const
{
    if (command.path) {
        return at(QDir::cleanPath(*command.path));
    }
    const auto tracked = std::ranges::find_if(m_tracked, [&](const TrackedPtr &candidate) {
        return candidate->known.name == command.repo;
    });
    return tracked == m_tracked.end() ? nullptr : *tracked;
}

Projects::TrackedPtr Projects::at(const QString &path) const
{
    const auto tracked = std::ranges::find_if(
        m_tracked, [&](const TrackedPtr &candidate) { return candidate->known.path == path; });
    return tracked == m_tracked.end() ? nullptr : *tracked;
}

Projects::TrackedPtr Projects::add(const KnownProject &known)
{
    auto tracked = std::make_shared<Tracked>();
    tracked->known = known;
    tracked->writing = std::make_unique<Strand>(m_writers);
    tracked->reading = std::make_unique<Strand>(m_readers);
    tracked->reader =
        std::make_shared<HistoryReader>(known.path + QLatin1String("/.ostra/history"));
    const std::weak_ptr<Tracked> weak = tracked;
    tracked->project = std::make_shared<Project>(
        known.path, Project::Listener{[this, weak](const ProjectSnapshot &snapshot) {
                                          later([this, weak, snapshot] {
                                              if (const auto strong = weak.lock()) {
                                                  apply(strong, snapshot);
                                              }
                                          });
                                      },
                                      [this, weak](const Project::Save &save) {
                                          later([this, weak, save] {
                                              if (const auto strong = weak.lock()) {
                                                  emit eventHappened(Event::SaveDetected{
                                                      strong->known.name, strong->known.path,
                                                      save.commit, save.deltaCount});
                                              }
                                          });
                                      }});
    RepoStatus unknown;
    unknown.name = known.name;
    unknown.path = known.path;
    unknown.currentBranch = QStringLiteral("main");
    tracked->json = encodeRepo(unknown);
    m_tracked.append(tracked);
    std::ranges::sort(m_tracked, [](const TrackedPtr &a, const TrackedPtr &b) {
        return a->known.name.compare(b->known.name, Qt::CaseInsensitive) < 0;
    });
    return tracked;
}

void Projects::track(const QString &path, const std::optional<Responder> &respond)
{
    const TrackedPtr tracked =
        add({path, QString(), uniqueName(QFileInfo(path).fileName(), nullptr)});
    tracked->isNew = true;
    tracked->isHidden = true;
    load(tracked, Origin::wanted, respond);
}

void Projects::load(const TrackedPtr &tracked, Origin origin,
                    const std::optional<Responder> &respond)
{
    tracked->isLoading = true;
    tracked->isAwake = true;
    busy();
    tracked->writing->post(
        [this, tracked, project = tracked->project, origin, respond, name = tracked->known.name] {
            auto outcome = [&]() -> Outcome<void> {
                if (origin == Origin::wanted && setsIn(project->folder()).isEmpty()) {
                    return failure(
                        QStringLiteral("There is no Live set in %1.").arg(project->folder()));
                }
                return project->load(origin == Origin::wanted ? Project::Missing::create
                                                              : Project::Missing::refuse,
                                     name);
            }();
            if (outcome && origin == Origin::wanted) {
                // The project comes with its songs, as long as they are no matter of many seconds;
                // the watch brings the others.
                QElapsedTimer clock;
                clock.start();
                for (const QString &file : setsIn(project->folder())) {
                    if (clock.elapsed() < kInitRecordingMs) {
                        (void)project->record(file);
                    }
                }
            }
            later([this, tracked, outcome, respond] { loaded(tracked, outcome, respond); });
        });
}

void Projects::loaded(const TrackedPtr &tracked, const Outcome<void> &outcome,
                      const std::optional<Responder> &respond)
{
    tracked->isLoading = false;
    const bool isNew = std::exchange(tracked->isNew, false);
    tracked->isHidden = false;
    if (outcome) {
        tracked->isMissing = false;
        tracked->isAnnounced = false;
        if (isNew) {
            Log::info(QStringLiteral("Tracking %1").arg(tracked->known.path));
        }
        makeUnique(tracked);
        forgetDiscovered(tracked->known.path);
    } else {
        Log::warning(outcome.error().message);
        if (isNew) {
            remove(tracked);
            if (!respond) {
                problem(outcome.error().message);
            }
        } else {
            tracked->isMissing = true;
            m_missing.start();
        }
    }
    if (respond) {
        outcome ? (*respond)(Reply::Ok{}) : respond->error(outcome.error().message);
    }
    if (!isStarting()) { // three hundred projects come up as one
        save();
        watchProjects();
        answerWaiting();
    }
}

/// Whether projects from before are still being read.
bool Projects::isStarting() const
{
    return std::ranges::any_of(
        m_tracked, [](const TrackedPtr &tracked) { return tracked->isLoading && !tracked->isNew; });
}

void Projects::remove(const TrackedPtr &tracked)
{
    m_tracked.removeOne(tracked);
}

void Projects::apply(const TrackedPtr &tracked, ProjectSnapshot snapshot)
{
    const bool isRenamed =
        tracked->known.id != snapshot.id || tracked->known.name != snapshot.status.name;
    if (isRenamed) {
        tracked->known.id = snapshot.id;
        tracked->known.name = snapshot.status.name;
        std::ranges::stable_sort(m_tracked, [](const TrackedPtr &a, const TrackedPtr &b) {
            return a->known.name.compare(b->known.name, Qt::CaseInsensitive) < 0;
        });
        save();
    }
    // Before the event of its first save goes out, which makes the client ask.
    tracked->isHidden = tracked->isHidden && snapshot.songs.isEmpty();
    tracked->json = encodeRepo(snapshot.status);
    tracked->snapshot = std::make_shared<const ProjectSnapshot>(std::move(snapshot));
}

/// Two projects must not share a name, because commands may carry nothing else; nor an identity,
/// because that is how a moved one is found.
void Projects::makeUnique(const TrackedPtr &tracked)
{
    const bool isCopy = std::ranges::any_of(m_tracked, [&](const TrackedPtr &other) {
        return other != tracked && other->known.id == tracked->known.id && !other->isMissing;
    });
    const QString name = uniqueName(tracked->known.name, tracked.get());
    const bool isTaken = name != tracked->known.name;
    if (!isCopy && !isTaken) {
        return;
    }
    tracked->writing->post([project = tracked->project, isCopy, isTaken, name] {
        if (isCopy) {
            (void)project->becomeCopy();
        }
        if (isTaken) {
            (void)project->rename(name);
        }
    });
}

QString Projects::uniqueName(const QString &name, const Tracked *except) const
{
    const auto isTaken = [&](const QString &candidate) {
        return std::ranges::any_of(m_tracked, [&](const TrackedPtr &other) {
            return other.get() != except && other->known.name == candidate;
        });
    };
    QString candidate = name;
    for (int i = 2; isTaken(candidate); ++i) {
        candidate = QStringLiteral("%1 %2").arg(name).arg(i);
    }
    return candidate;
}

// What happens on disk.

void Projects::settled(const QString &setPath)
{
    const QString folder = folderOf(setPath);
    if (const TrackedPtr tracked = at(folder)) {
        record(tracked, fileOf(setPath));
    } else if (isBelowWatchPath(folder)) {
        track(folder, std::nullopt);
    }
}

void Projects::record(const TrackedPtr &tracked, const QString &file)
{
    tracked->writing->post([this, tracked, project = tracked->project, file] {
        if (!project->isLoaded()) {
            return;
        }
        const auto outcome = project->record(file);
        later([this, tracked, file, outcome] { recorded(tracked, file, outcome); });
    });
    tracked->mayBePacked = true;
    tracked->isAwake = true;
    busy();
}

void Projects::recorded(const TrackedPtr &tracked, const QString &file,
                        const Outcome<Project::Recorded> &outcome)
{
    const QString path = tracked->known.path + u'/' + file;
    QString trouble;
    if (!outcome) {
        trouble = outcome.error().message;
        int &wait = m_retryMs[path];
        wait = wait == 0 ? kFirstRetryMs : std::min(2 * wait, kLongestRetryMs);
        QTimer::singleShot(wait, this, [this, tracked, file] { record(tracked, file); });
    } else if (*outcome == Project::Recorded::changing) {
        QMetaObject::invokeMethod(m_watch, [watch = m_watch, path] { watch->lookAgain(path); });
        return;
    } else if (*outcome == Project::Recorded::notWhole) {
        // Perhaps its writer paused. Only what stays broken is worth a word.
        trouble = QStringLiteral("“%1” is not a whole Live set, so this state of it is not in the "
                                 "history.")
                      .arg(file);
        if (!m_troubles.contains(path)) {
            m_troubles.insert(path, QString());
            QTimer::singleShot(kNotWholeAfterMs, this,
                               [this, tracked, file] { record(tracked, file); });
            return;
        }
    }
    if (trouble.isEmpty()) {
        m_troubles.remove(path);
        m_retryMs.remove(path);
    } else if (m_troubles.value(path) != trouble) {
        m_troubles.insert(path, trouble);
        problem(trouble);
    }
}

void Projects::gone(const QString &setPath)
{
    m_troubles.remove(setPath);
    if (const TrackedPtr tracked = at(folderOf(setPath))) {
        tracked->writing->post([project = tracked->project, file = fileOf(setPath)] {
            if (project->isLoaded()) {
                project->noteGone(file);
            }
        });
    }
}

void Projects::projectGone(const QString &folder)
{
    if (const TrackedPtr tracked = at(folder)) {
        tracked->isMissing = true;
        m_missing.start();
    }
}

void Projects::projectBack(const QString &folder)
{
    if (const TrackedPtr tracked = at(folder); tracked && tracked->isMissing) {
        load(tracked, Origin::remembered, std::nullopt);
    }
}

/// Projects that a look into a folder brought up: moved ones are followed, new ones offered.
void Projects::found(const QList<FoundProject> &projects)
{
    bool isChanged = false;
    for (const FoundProject &project : projects) {
        if (at(project.path) || relocate(project)) {
            continue;
        }
        if (!project.projectId.isEmpty() && isBelowWatchPath(project.path)) {
            track(project.path, std::nullopt); // it was tracked before the settings were lost
            continue;
        }
        const DiscoveredProject offered{project.path, QFileInfo(project.path).fileName(),
                                        project.sets};
        const auto known =
            std::ranges::find(m_settings.discovered, project.path, &DiscoveredProject::path);
        if (known == m_settings.discovered.end()) {
            m_settings.discovered.append(offered);
            isChanged = true;
        } else if (*known != offered) {
            *known = offered;
            isChanged = true;
        }
    }
    if (isChanged) {
        std::ranges::sort(m_settings.discovered, {}, &DiscoveredProject::path);
        save();
    }
}

bool Projects::relocate(const FoundProject &project, const std::optional<Responder> &respond)
{
    if (project.projectId.isEmpty() || at(project.path)) {
        return false;
    }
    const auto moved = std::ranges::find_if(m_tracked, [&](const TrackedPtr &tracked) {
        return tracked->known.id == project.projectId && !QFileInfo(tracked->known.path).isDir();
    });
    if (moved == m_tracked.end()) {
        return false;
    }
    const TrackedPtr tracked = *moved;
    Log::info(QStringLiteral("%1 moved to %2").arg(tracked->known.path, project.path));
    tracked->known.path = project.path;
    tracked->reader =
        std::make_shared<HistoryReader>(project.path + QLatin1String("/.ostra/history"));
    tracked->writing->post(
        [worker = tracked->project, path = project.path] { worker->moveTo(path); });
    load(tracked, Origin::remembered, respond);
    return true;
}

void Projects::announceMissing()
{
    for (const TrackedPtr &tracked : m_tracked) {
        if (tracked->isMissing && !tracked->isAnnounced) {
            tracked->isAnnounced = true;
            problem(QStringLiteral("“%1” is not at %2 any more. It stays in the list until its "
                                   "folder comes back.")
                        .arg(tracked->known.name, tracked->known.path));
        }
    }
}

void Projects::watchProjects()
{
    QStringList folders;
    for (const TrackedPtr &tracked : m_tracked) {
        if (!tracked->isLoading) {
            folders << tracked->known.path;
        }
    }
    QMetaObject::invokeMethod(m_watch, [watch = m_watch, folders] { watch->setProjects(folders); });
}

// Looking for projects.

void Projects::startScan()
{
    if (std::exchange(m_isScanning, true)) {
        return;
    }
    QStringList roots{m_options.home};
    for (const QString &path : std::as_const(m_settings.watchPaths)) {
        if (!path.startsWith(m_options.home + u'/')) {
            roots << path;
        }
    }
    m_readers.start([this, roots] {
        QList<FoundProject> projects;
        for (const QString &root : roots) {
            projects += findProjects(root, m_isStopping);
        }
        later([this, projects] { scanned(projects); });
    });
}

void Projects::scanned(const QList<FoundProject> &projects)
{
    m_isScanning = false;
    Log::info(QStringLiteral("Found %1 projects").arg(projects.size()));
    m_settings.discovered.removeIf([](const DiscoveredProject &project) {
        return !QFileInfo(project.path).isDir(); // one that is away is found again when it is back
    });
    found(projects);
    m_settings.hasScannedHome = true;
    save();
    for (const Responder &respond : std::exchange(m_waitingForScan, {})) {
        respond(Reply::Ok{});
    }
}

void Projects::forgetDiscovered(const QString &path)
{
    m_settings.discovered.removeIf(
        [&](const DiscoveredProject &project) { return project.path == path; });
}

// Odds and ends.

void Projects::problem(const QString &message)
{
    Log::warning(message);
    emit eventHappened(Event::Error{message});
}

void Projects::save()
{
    m_settings.projects.clear();
    for (const TrackedPtr &tracked : std::as_const(m_tracked)) {
        if (!tracked->known.id.isEmpty()) {
            m_settings.projects.append(tracked->known);
        }
    }
    if (m_settings == m_saved) {
        return;
    }
    if (const auto saved = m_settings.save(m_options.settingsPath); !saved) {
        problem(saved.error().message);
        return;
    }
    m_saved = m_settings;
}

void Projects::busy()
{
    m_idle.start();
    m_tidy.start();
}

/// Nobody has asked for anything for a while: time to make things small.
void Projects::tidy()
{
    double load = 0;
    const bool isBusy = ::getloadavg(&load, 1) == 1 && load > QThread::idealThreadCount();
    if (isBusy && !m_options.packAfterMs) {
        m_tidy.start(kBusyMachineMs);
        return;
    }
    m_tidy.setInterval(m_options.packAfterMs.value_or(kPackAfterMs));
    for (const TrackedPtr &tracked : std::as_const(m_tracked)) {
        if (!tracked->isMissing && std::exchange(tracked->mayBePacked, false)) {
            pack(tracked);
        }
    }
}

void Projects::pack(const TrackedPtr &tracked)
{
    tracked->isAwake = true;
    m_idle.start();
    // What was deleted long ago goes first; that needs the project for itself.
    tracked->writing->post([this, tracked, project = tracked->project] {
        if (!project->isLoaded()) {
            return;
        }
        const QString folder = project->history().folder();
        const bool hasDropped = project->emptyTrash(kTrashKeptSeconds);
        project->remeasure();
        m_packer.start([this, tracked, folder, hasDropped] {
            const bool isWhole = hasDropped || Packer::hasManyPacks(folder);
            if (m_isStopping || (!isWhole && !Packer::isWorthwhile(folder))) {
                return;
            }
            isWhole ? repack(tracked, folder) : packLoose(tracked, folder);
        });
    });
}

void Projects::packLoose(const TrackedPtr &tracked, const QString &folder)
{
    if (const auto packed = Packer::packLoose(folder); !packed) {
        Log::warning(packed.error().message);
    }
    later([this, tracked] { packed(tracked); });
}

void Projects::repack(const TrackedPtr &tracked, const QString &folder)
{
    const auto repacked = Packer::repack(folder);
    if (!repacked) {
        Log::warning(repacked.error().message);
        return;
    }
    later([this, tracked, repacked = *repacked] {
        tracked->writing->post([this, tracked, project = tracked->project, repacked] {
            if (project->removeReplaced(repacked)) {
                later([this, tracked] { packed(tracked); });
            } else {
                later([tracked] { tracked->mayBePacked = true; }); // once more, later
            }
        });
    });
}

void Projects::packed(const TrackedPtr &tracked)
{
    Log::info(QStringLiteral("Packed the history of %1").arg(tracked->known.path));
    tracked->writing->post([project = tracked->project] { project->remeasure(); });
    tracked->isAwake = true;
    m_idle.start();
}

void Projects::idle()
{
    for (const TrackedPtr &tracked : std::as_const(m_tracked)) {
        if (std::exchange(tracked->isAwake, false)) {
            tracked->writing->post([project = tracked->project] { project->rest(); });
            tracked->reading->post([reader = tracked->reader] { reader->rest(); });
        }
    }
    m_trim.start();
}

void Projects::trim()
{
#ifdef __GLIBC__
    // A large set leaves holes behind that the allocator would keep.
    malloc_trim(0);
#endif
}

bool Projects::isBelowWatchPath(const QString &path) const
{
    return std::ranges::any_of(m_settings.watchPaths, [&](const QString &root) {
        return path == root || path.startsWith(root + u'/');
    });
}

void Projects::later(std::function<void()> job)
{
    QMetaObject::invokeMethod(this, std::move(job), Qt::QueuedConnection);
}

} // namespace ostra
