#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

Q_MOC_INCLUDE("DaemonState.h")
Q_MOC_INCLUDE("FolderListModel.h")

namespace ostra {

class DaemonState;
class FolderListModel;

/// The settings: the folders that the service watches, scanning, and its log-in agent. All of it
/// lives in the service; this model only asks. Made by SettingsView; main thread only.
class SettingsViewModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostra::DaemonState *daemon READ daemon WRITE setDaemon NOTIFY daemonChanged REQUIRED)
    Q_PROPERTY(ostra::FolderListModel *watchPaths READ watchPaths NOTIFY daemonChanged)
    Q_PROPERTY(bool hasWatchPaths READ hasWatchPaths NOTIFY watchPathsChanged)
    Q_PROPERTY(QString rescanTitle READ rescanTitle NOTIFY rescanTitleChanged)

public:
    explicit SettingsViewModel(QObject *parent = nullptr);

    DaemonState *daemon() const;
    /// Once. Setting it is showing the settings: the watch folders and the agent's state are
    /// fetched.
    void setDaemon(DaemonState *daemon);
    FolderListModel *watchPaths() const;
    bool hasWatchPaths() const;
    QString rescanTitle() const;

    Q_INVOKABLE void removeWatchPath(const QString &path);
    Q_INVOKABLE void rescan();
    Q_INVOKABLE void setStartAtLogin(bool on);

signals:
    void daemonChanged();
    void watchPathsChanged();
    void rescanTitleChanged();

private:
    static QCoro::Task<> load(QPointer<DaemonState> daemon);
    static QCoro::Task<> remove(QPointer<DaemonState> daemon, QString path);

    QPointer<DaemonState> m_daemon;
};

} // namespace ostra
