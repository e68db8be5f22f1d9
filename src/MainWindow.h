#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QQmlComponent>
#include <QQuickWindow>
#include <QRect>
#include <QVariantMap>

#include <memory>
#include <vector>

class QQmlEngine;

namespace ostra {

class DaemonState;
class FolderChooser;
class MenuBarViewModel;

/// The one window. Docked, it is a panel beside the menu-bar item, without a frame, that goes away
/// when the user turns elsewhere, unless something on it would be lost or it is kept open;
/// ordinary, it is a window like any other. It is made when it is first shown. Owned by App; main
/// thread only.
class MainWindow : public QObject {
    Q_OBJECT

public:
    enum class Mode { docked, ordinary };

    using Loading = std::vector<std::unique_ptr<QQmlComponent>>;
    /// Loads what the window is made of on the engine's own thread, while the result lives, beside
    /// whatever else there is to do before the window is shown.
    static Loading beginLoading(QQmlEngine &engine);

    /// All of these outlive the window.
    MainWindow(QQmlEngine &engine, DaemonState &daemon, FolderChooser &folderChooser,
               QString versionText, QObject *parent = nullptr);
    ~MainWindow() override;

    void setMode(Mode mode);
    Mode mode() const { return m_mode; }
    void setKeepsOpen(bool keepsOpen) { m_keepsOpen = keepsOpen; }

    /// Makes the window, which show() does too where it was not done before.
    void prepare();
    /// Shows and raises the window. `item`: where the menu-bar item is, in logical pixels of the
    /// virtual desktop; empty where nobody knows. `activationToken`: what the desktop gave whoever
    /// asked, or empty.
    void show(const QRect &item, const QByteArray &activationToken = {});
    void hide();
    bool isVisible() const;
    /// True for a moment after the window went away because the user clicked elsewhere: where that
    /// click was on the item it meant "close", not "open again".
    bool wasJustDismissed() const;
    void showSettings();

signals:
    void closed(); ///< by its close control or by key; it is hidden already
    void guideRequested();
    void rescanRequested();

private slots:
    void close();

private:
    bool eventFilter(QObject *watched, QEvent *event) override;
    std::unique_ptr<QObject> create(const char *file, const QVariantMap &properties = {});
    void make();
    void fill();
    void applyMode();
    void map();
    void fitOnScreen();
    void keepBesideItem();
    void dismissWhenLeft();
    MenuBarViewModel *view() const;

    QQmlEngine &m_engine;
    DaemonState &m_daemon;
    FolderChooser &m_folderChooser;
    QString m_versionText;
    std::unique_ptr<QQuickWindow> m_window;
    QQuickItem *m_content = nullptr; ///< made when it is first shown; the window owns it
    QRect m_item;
    QElapsedTimer m_sinceDismissal;
    Mode m_mode = Mode::ordinary;
    bool m_keepsOpen = false;
};

} // namespace ostra
