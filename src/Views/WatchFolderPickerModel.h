#pragma once

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QtQml/qqmlregistration.h>

Q_MOC_INCLUDE("FolderListModel.h")

namespace ostra {

class DaemonState;
class FolderChooser;
class FolderListModel;

/// Adds a folder to those that the service watches. It asks with the platform's own dialog; where
/// there is none, with a field for the path that proposes the folders there are. A cancelled
/// choice sends nothing. Owned by MenuBarViewModel; main thread only, folders are read elsewhere.
class WatchFolderPickerModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("made by MenuBarViewModel")
    /// From the question to its answer.
    Q_PROPERTY(bool presented READ isPresented WRITE setPresented NOTIFY presentedChanged)
    /// The question is put by the field.
    Q_PROPERTY(bool askingInline READ isAskingInline NOTIFY presentedChanged)
    Q_PROPERTY(QString path READ path WRITE setPath NOTIFY pathChanged)
    Q_PROPERTY(bool canSubmit READ canSubmit NOTIFY pathChanged)
    Q_PROPERTY(QString problem READ problem NOTIFY problemChanged) ///< empty for none
    Q_PROPERTY(ostra::FolderListModel *suggestions READ suggestions CONSTANT)

public:
    explicit WatchFolderPickerModel(QObject *parent);

    void setDaemon(DaemonState *daemon);
    /// `chooser` outlives this object; without one the field is used. Its dialog stands over
    /// `parentWindow`.
    void setChooser(FolderChooser *chooser, quintptr parentWindow)
    {
        m_chooser = chooser;
        m_parentWindow = parentWindow;
    }

    bool isPresented() const { return m_isPresented; }
    void setPresented(bool presented);
    bool isAskingInline() const { return m_isAskingInline; }
    QString path() const { return m_path; }
    void setPath(const QString &path);
    bool canSubmit() const;
    QString problem() const { return m_problem; }
    FolderListModel *suggestions() const { return m_suggestions; }

    /// Takes the typed folder, which may begin with "~". What is no folder is told, not sent.
    Q_INVOKABLE void submit();
    Q_INVOKABLE void cancel() { setPresented(false); }
    /// Puts a proposed folder into the field.
    Q_INVOKABLE void take(const QString &path);

signals:
    void presentedChanged();
    void pathChanged();
    void problemChanged();

private:
    using Self = QPointer<WatchFolderPickerModel>;
    static QCoro::Task<> ask(Self self);
    static QCoro::Task<> check(Self self, QString folder);
    static QCoro::Task<> suggest(Self self, QString text);
    static QCoro::Task<> add(QPointer<DaemonState> daemon, QString folder);
    void askInline();
    void finish();
    void setProblem(const QString &problem);

    QPointer<DaemonState> m_daemon;
    FolderChooser *m_chooser = nullptr;
    quintptr m_parentWindow = 0;
    FolderListModel *m_suggestions;
    QString m_path;
    QString m_problem;
    bool m_isPresented = false;
    bool m_isAskingInline = false;
};

} // namespace ostra
