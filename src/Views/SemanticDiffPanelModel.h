#pragma once

#include "Views/DiffGroup.h"
#include "Views/RowColumn.h"

#include <QObject>
#include <QSet>
#include <QtQml/qqmlregistration.h>

#include <variant>

namespace ostra {

namespace DiffPanelCase {
struct Empty {
    QString text; ///< shown as it is
    bool operator==(const Empty &) const = default;
};
struct Loaded {
    QList<DeltaSummary> summaries;
    bool operator==(const Loaded &) const = default;
};
struct Loading {
    bool operator==(const Loading &) const = default;
};
} // namespace DiffPanelCase

using DiffPanelState =
    std::variant<DiffPanelCase::Empty, DiffPanelCase::Loaded, DiffPanelCase::Loading>;

/// One row of the diff panel's list.
struct DiffRow {
    enum class Kind { line, group, more };
    /// How loud a line is, as SemanticDiffPanelModel::Tone.
    enum class Tone { ink, dim, grey };

    QString key;
    Kind kind = Kind::line;
    QString text;
    QString symbol; ///< of a line: "+", "−" or "~"
    Tone tone = Tone::grey;
    QString count; ///< of a group
    bool isExpanded = false;
    bool hasDivider = false; ///< above the row
    int top = 0;             ///< in points, from the top of the list
    int height = 0;          ///< in points
    bool operator==(const DiffRow &) const = default;
};

struct DiffRowTraits {
    static QHash<int, QByteArray> roleNames();
    static QString key(const DiffRow &row) { return row.key; }
    static QVariant data(const DiffRow &row, int role);
    static QList<int> changedRoles(const DiffRow &before, const DiffRow &after);
};

/// A short list line by line; a long one in groups, of which the expanded ones show their first
/// changes.
QList<DiffRow> diffRows(const QList<DeltaSummary> &summaries, const QList<DiffGroup> &groups,
                        const QSet<QString> &expandedGroups);

/// What changed in a song between two states, for the diff panel. The song page's model owns it,
/// fetches the changes and sets them here. Unfolded groups stay unfolded when the list is loaded
/// again. Lives on the main thread.
class SemanticDiffPanelModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(Case panelCase READ panelCase NOTIFY changed)
    Q_PROPERTY(QString title READ title NOTIFY changed)
    Q_PROPERTY(QString countText READ countText NOTIFY changed)
    Q_PROPERTY(QString emptyText READ emptyText NOTIFY changed)
    Q_PROPERTY(QAbstractItemModel *rows READ rows CONSTANT)
    Q_PROPERTY(int rowsHeight READ rowsHeight NOTIFY changed)

public:
    /// The cases of DiffPanelState, in its order.
    enum Case { Empty, Loaded, Loading };
    Q_ENUM(Case)
    enum RowKind { Line, Group, More };
    Q_ENUM(RowKind)
    enum Tone { Ink, Dim, Grey };
    Q_ENUM(Tone)

    explicit SemanticDiffPanelModel(QObject *parent = nullptr);

    const QString &context() const { return m_context; }
    void setContext(const QString &context);
    const QList<DeltaSummary> &summaries() const { return m_summaries; }
    const DiffPanelState &diffState() const { return m_state; }
    void setDiffState(DiffPanelState state);
    const QSet<QString> &expandedGroups() const { return m_expandedGroups; }
    Q_INVOKABLE void toggleGroup(const QString &id);
    /// For another song: nothing loaded, nothing unfolded.
    void reset();

    Case panelCase() const { return Case(m_state.index()); }
    QString title() const;     ///< "CHANGES · " and the context
    QString countText() const; ///< "· 12 changes" over a grouped list, else empty
    QString emptyText() const;

    /// The list, as far as it is on screen.
    QAbstractItemModel *rows() { return m_rows.model(); }
    const QList<DiffRow> &allRows() const { return m_rows.rows(); }
    int rowsHeight() const { return m_rows.height(); }
    /// In points from the top of the list.
    Q_INVOKABLE void setVisible(qreal top, qreal bottom) { m_rows.setVisible(top, bottom); }

signals:
    void changed();

private:
    void updateRows();

    QString m_context;
    DiffPanelState m_state = DiffPanelCase::Loading{};
    QList<DeltaSummary> m_summaries;
    QList<DiffGroup> m_groups;
    QSet<QString> m_expandedGroups;
    RowColumn<DiffRow, DiffRowTraits> m_rows;
};

} // namespace ostra
