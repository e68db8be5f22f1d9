#pragma once

#include "Design/DSSlot.h"

#include <QVariantAnimation>

#include <memory>

namespace ostra {

/// Content that comes and goes with the panel animation: it fades while its place opens, and as a
/// banner (`slides`) it moves in from its top edge. What is not shown does not exist. What is shown
/// from the beginning is there at once. GUI thread.
class DSReveal : public ostra::DSSlot {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(bool shown READ isShown WRITE setShown NOTIFY shownChanged FINAL)
    Q_PROPERTY(bool slides MEMBER m_slides NOTIFY slidesChanged FINAL)
    /// Milliseconds; the panels' own unless set.
    Q_PROPERTY(int duration READ duration WRITE setDuration NOTIFY durationChanged FINAL)
    Q_PROPERTY(QQmlComponent *content READ sourceComponent WRITE setSourceComponent NOTIFY
                   sourceComponentChanged FINAL)

public:
    explicit DSReveal(QQuickItem *parent = nullptr);
    ~DSReveal() override;

    bool isShown() const { return m_isShown; }
    void setShown(bool shown);
    int duration() const;
    void setDuration(int milliseconds);

signals:
    void shownChanged();
    void slidesChanged();
    void durationChanged();

protected:
    void componentComplete() override;
    void geometryChange(const QRectF &now, const QRectF &before) override;
    void takeWantedSize() override;

private:
    void setProgress(qreal progress);

    std::unique_ptr<QVariantAnimation> m_animation; ///< from the first change on
    qreal m_progress = 0;                           ///< 0 gone, 1 wholly there
    int m_duration = -1;
    bool m_isShown = false;
    bool m_slides = false;
};

} // namespace ostra
