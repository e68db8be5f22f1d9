#include "Views/WatchFolderPickerModel.h"

#include "DaemonState.h"
#include "FolderListModel.h"
#include "Platform/FolderChooser.h"

#include <QCoroFuture>
#include <QDir>
#include <QFileInfo>
#include <QPromise>
#include <QThreadPool>

#include <functional>

namespace ostra {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMostSuggestions = 6;

/// Runs a look at the disk where it may take its time: a folder can lie on a sleeping drive.
template <typename T>
QFuture<T> onDiskThread(std::function<T()> look)
{
    auto promise = std::make_shared<QPromise<T>>();
    promise->start();
    QThreadPool::globalInstance()->start([promise, look = std::move(look)] {
        promise->addResult(look());
        promise->finish();
    });
    return promise->future();
}

QString absolute(const QString &typed)
{
    QString path = typed.trimmed();
    if (path == u"~"_s || path.startsWith(u"~/"_s)) {
        return QDir::homePath() + path.sliced(1);
    }
    return path;
}

/// The folders whose path begins with what is typed, hidden ones only when a dot asks for them.
QStringList listFoldersLike(const QString &typed)
{
    const qsizetype slash = typed.lastIndexOf(u'/');
    if (slash < 0) {
        return {};
    }
    const QString parent = typed.left(slash + 1);
    const QString begin = typed.sliced(slash + 1);
    QDir::Filters filters = QDir::Dirs | QDir::NoDotAndDotDot;
    filters.setFlag(QDir::Hidden, begin.startsWith(u'.'));
    QStringList found;
    const QStringList names = QDir(parent).entryList(filters, QDir::Name | QDir::IgnoreCase);
    for (const QString &name : names) {
        if (name.startsWith(begin, Qt::CaseInsensitive)) {
            found << parent + name;
        }
        if (found.size() == kMostSuggestions) {
            break;
        }
    }
    return found;
}

// Plain functions: g++ 12 destroys the captures of a lambda inside a co_await twice.
QFuture<QStringList> foldersLike(const QString &typed)
{
    return onDiskThread<QStringList>([typed] { return listFoldersLike(typed); });
}

QFuture<bool> isFolder(const QString &path)
{
    return onDiskThread<bool>([path] {
        const QFileInfo info(path);
        return info.isAbsolute() && info.isDir();
    });
}

} // namespace

WatchFolderPickerModel::WatchFolderPickerModel(QObject *parent)
    : QObject(parent), m_suggestions(new FolderListModel(this))
{
}

void WatchFolderPickerModel::setDaemon(DaemonState *daemon)
{
    m_daemon = daemon;
}

void WatchFolderPickerModel::setPresented(bool presented)
{
    if (m_isPresented == presented) {
        return;
    }
    if (!presented) {
        finish();
        return;
    }
    m_isPresented = true;
    if (m_chooser) {
        emit presentedChanged();
        ask(this);
    } else {
        askInline();
    }
}

void WatchFolderPickerModel::setPath(const QString &path)
{
    if (m_path == path) {
        return;
    }
    m_path = path;
    setProblem({});
    emit pathChanged();
    suggest(this, path);
}

bool WatchFolderPickerModel::canSubmit() const
{
    return !m_path.trimmed().isEmpty();
}

void WatchFolderPickerModel::submit()
{
    if (canSubmit()) {
        check(this, absolute(m_path));
    }
}

void WatchFolderPickerModel::take(const QString &path)
{
    setPath(path + u'/');
}

QCoro::Task<> WatchFolderPickerModel::ask(Self self)
{
    const auto chosen = co_await self->m_chooser->choose(self->m_parentWindow);
    if (!self || !self->m_isPresented) {
        co_return;
    }
    if (chosen) {
        self->finish();
        co_await add(self->m_daemon, *chosen);
    } else if (chosen.error() == FolderChooser::Failure::unavailable) {
        self->askInline();
    } else {
        self->finish();
    }
}

QCoro::Task<> WatchFolderPickerModel::check(Self self, QString folder)
{
    const QString asked = self->m_path;
    const bool exists = co_await isFolder(folder);
    // Another path may have been typed meanwhile.
    if (!self || !self->m_isAskingInline || self->m_path != asked) {
        co_return;
    }
    if (exists) {
        self->finish();
        co_await add(self->m_daemon, QDir::cleanPath(folder));
    } else {
        self->setProblem(u"No such folder"_s);
    }
}

QCoro::Task<> WatchFolderPickerModel::suggest(Self self, QString text)
{
    const QString typed = absolute(text);
    const QStringList folders = co_await foldersLike(typed);
    if (self && self->m_path == text) {
        self->m_suggestions->setPaths(folders);
    }
}

QCoro::Task<> WatchFolderPickerModel::add(QPointer<DaemonState> daemon, QString folder)
{
    if (!daemon) {
        co_return;
    }
    const IPCCommand command{.cmd = u"watch_path_add"_s, .path = folder};
    co_await daemon->perform(command, u"Add watch path"_s, DaemonState::Refresh::no);
    if (daemon) {
        co_await daemon->fetchWatchPaths();
    }
    if (daemon) {
        co_await daemon->refreshAll();
    }
}

void WatchFolderPickerModel::askInline()
{
    m_isAskingInline = true;
    emit presentedChanged();
    setPath(u"~/"_s);
}

void WatchFolderPickerModel::finish()
{
    m_isPresented = false;
    m_isAskingInline = false;
    emit presentedChanged();
    setPath({});
    m_suggestions->setPaths({});
}

void WatchFolderPickerModel::setProblem(const QString &problem)
{
    if (m_problem != problem) {
        m_problem = problem;
        emit problemChanged();
    }
}

} // namespace ostra
