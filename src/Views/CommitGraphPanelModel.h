#pragma once

#include "Views/CommitGraphLayout.h"

#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace ostra {

/// "12 saves · 3 variations · 2 merges".
QString commitGraphCaption(const SongGraph &graph);
/// What assistive technology says for the whole drawing.
QString commitGraphDescription(const SongGraph &graph);
/// What the tool tip says of one save: its message, and under it short id, age and version.
/// `now` is in seconds since the epoch and defaults to the wall clock.
QString commitGraphToolTip(const SongGraphNode &node, std::optional<double> now = std::nullopt);

/// The saved history of one song for the commit graph panel. The song page's model owns it and
/// hands it each fetched graph; it is laid out once, here. Lives on the main thread.
class CommitGraphPanelModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString caption READ caption NOTIFY graphChanged)
    Q_PROPERTY(QString description READ description NOTIFY graphChanged)
    Q_PROPERTY(qreal contentWidth READ contentWidth NOTIFY graphChanged)
    Q_PROPERTY(qreal contentHeight READ contentHeight NOTIFY graphChanged)

public:
    explicit CommitGraphPanelModel(QObject *parent = nullptr);

    const SongGraph &graph() const { return m_graph; }
    const CommitGraphLayout &layout() const { return m_layout; }
    void setGraph(SongGraph graph);

    QString caption() const { return m_caption; }
    QString description() const { return m_description; }
    qreal contentWidth() const { return m_layout.size().width(); }
    qreal contentHeight() const { return m_layout.size().height(); }

    /// The newest save of the current variation, when the service marked one.
    std::optional<qsizetype> currentTip() const { return m_currentTip; }
    /// -1 when the graph holds no such save.
    qsizetype indexOf(const QString &id) const;

signals:
    void graphChanged();

private:
    SongGraph m_graph;
    CommitGraphLayout m_layout;
    QString m_caption;
    QString m_description;
    std::optional<qsizetype> m_currentTip;
};

} // namespace ostra
