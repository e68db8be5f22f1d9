#pragma once

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>

namespace ostra {

/// The rows of a drop-down: options in order, one of them selected by its tag, or none. Takes a
/// list of strings (tag and label alike) or a list of {tag, label} objects. GUI thread.
class MenuOptions : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QVariant source READ source WRITE setSource NOTIFY sourceChanged FINAL)
    Q_PROPERTY(QString selection READ selection WRITE setSelection NOTIFY selectionChanged FINAL)
    Q_PROPERTY(int selectedRow READ selectedRow NOTIFY selectionChanged FINAL)
    Q_PROPERTY(QString selectedLabel READ selectedLabel NOTIFY selectionChanged FINAL)

public:
    enum Role { Tag = Qt::UserRole, Label, Selected };

    using QAbstractListModel::QAbstractListModel;

    QVariant source() const { return m_source; }
    void setSource(const QVariant &source);
    QString selection() const { return m_selection; }
    void setSelection(const QString &tag);
    int selectedRow() const;       ///< -1 when the selection matches no option
    QString selectedLabel() const; ///< empty when the selection matches no option
    Q_INVOKABLE QString tagAt(int row) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

signals:
    void sourceChanged();
    void selectionChanged();

private:
    struct Option {
        QString tag, label;
        friend bool operator==(const Option &, const Option &) = default;
    };
    static QList<Option> read(const QVariant &source);

    QVariant m_source;
    QList<Option> m_options;
    QString m_selection;
};

} // namespace ostra
