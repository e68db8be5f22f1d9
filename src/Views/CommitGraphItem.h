#pragma once

#include "Views/CommitGraphPanelModel.h"

#include <QColor>
#include <QFont>
#include <QPointer>
#include <QQuickPaintedItem>

namespace ostra {

/// Draws the part of a graph that lies in `area`, in the graph's own coordinates: lines, then the
/// current variation's lines, then the dots.
struct CommitGraphStyle {
    Q_GADGET
    QML_VALUE_TYPE(commitGraphStyle)
    Q_PROPERTY(QColor paper MEMBER paper)
    Q_PROPERTY(QColor ink2 MEMBER ink2)
    Q_PROPERTY(QColor grey MEMBER grey)
    Q_PROPERTY(QColor greyDim MEMBER greyDim)
    Q_PROPERTY(QColor accent MEMBER accent)
    Q_PROPERTY(QColor mark MEMBER mark)
    Q_PROPERTY(QFont labelFont MEMBER labelFont)

public:
    QColor paper;
    QColor ink2;
    QColor grey;
    QColor greyDim;
    QColor accent;
    QColor mark; ///< of the current variation's tip
    QFont labelFont;
    bool operator==(const CommitGraphStyle &) const = default;
};
void paintCommitGraph(QPainter &painter, const CommitGraphLayout &layout,
                      const CommitGraphStyle &style, const QRectF &area);

/// The drawing of a commit graph: a pane as large as what is seen of it, painted for the place to
/// which it is scrolled, so that a long history costs no more than a short one. It stays at the
/// newest save until it is scrolled away from there.
///
/// It also answers pointer and keyboard: the save under the pointer, or the one that the arrow keys
/// reached, is the one pointed at.
class CommitGraphItem : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        ostra::CommitGraphPanelModel *model READ model WRITE setModel NOTIFY modelChanged FINAL)
    Q_PROPERTY(ostra::CommitGraphStyle style READ style WRITE setStyle NOTIFY styleChanged FINAL)
    Q_PROPERTY(qreal contentX READ contentX WRITE setContentX NOTIFY contentMoved FINAL)
    Q_PROPERTY(qreal contentY READ contentY WRITE setContentY NOTIFY contentMoved FINAL)
    Q_PROPERTY(bool isPointing READ isPointing NOTIFY pointedChanged FINAL)
    Q_PROPERTY(QString pointedText READ pointedText NOTIFY pointedChanged FINAL)
    /// Where in the pane the save pointed at lies.
    Q_PROPERTY(QPointF pointedAt READ pointedAt NOTIFY pointedChanged FINAL)

public:
    explicit CommitGraphItem(QQuickItem *parent = nullptr);

    CommitGraphPanelModel *model() const { return m_model; }
    void setModel(CommitGraphPanelModel *model);
    const CommitGraphStyle &style() const { return m_style; }
    void setStyle(const CommitGraphStyle &style);
    qreal contentX() const { return m_content.x(); }
    void setContentX(qreal x);
    qreal contentY() const { return m_content.y(); }
    void setContentY(qreal y);

    std::optional<qsizetype> pointed() const;
    bool isPointing() const { return pointed().has_value(); }
    QString pointedText() const;
    QPointF pointedAt() const;

    void paint(QPainter *painter) override;

signals:
    void modelChanged();
    void styleChanged();
    void contentMoved();
    void pointedChanged();
    /// The view around the pane should be scrolled there.
    void scrollRequested(qreal contentX, qreal contentY);

protected:
    void geometryChange(const QRectF &newGeometry, const QRectF &oldGeometry) override;
    void hoverEnterEvent(QHoverEvent *event) override;
    void hoverMoveEvent(QHoverEvent *event) override;
    void hoverLeaveEvent(QHoverEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void showGraph();
    void showNewest();
    void reveal(qsizetype node);
    void setHovered(std::optional<qsizetype> node);
    void walkTo(std::optional<qsizetype> node);
    qsizetype startOfWalk() const;
    QPointF farthest() const;
    QRectF visibleArea() const { return {m_content, size()}; }
    /// The pointer to the current variation's tip while that is out of sight; empty otherwise.
    QPolygonF tipPointer() const;
    void paintCurrentTip(QPainter &painter) const;
    void paintPointed(QPainter &painter) const;
    void paintLaneLabels(QPainter &painter) const;

    QPointer<CommitGraphPanelModel> m_model;
    CommitGraphStyle m_style;
    QPointF m_content;
    bool m_followsNewest = true;
    std::optional<qsizetype> m_hovered;
    std::optional<qsizetype> m_walked;
    QString m_walkedId;
};

} // namespace ostra
