#pragma once

#include "Design/Glyphs.h"
#include "Design/ImageItem.h"

namespace ostra {

/// Draws one figure, `size` × `size` points, crisp at any pixel ratio. Images are shared between
/// all items that show the same figure alike.
class FigureItem : public ostra::ImageItem {
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(qreal size READ size WRITE setSize NOTIFY lookChanged FINAL)
    Q_PROPERTY(qreal lineWidth READ lineWidth WRITE setLineWidth NOTIFY lookChanged FINAL)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY lookChanged FINAL)

public:
    explicit FigureItem(qreal size, QQuickItem *parent = nullptr);

    qreal size() const { return m_size; }
    void setSize(qreal size);
    qreal lineWidth() const { return m_lineWidth; }
    void setLineWidth(qreal lineWidth); ///< points; 0 takes the figure's own
    QColor color() const { return m_color; }
    void setColor(const QColor &color);

signals:
    void lookChanged();

protected:
    virtual const Figure *figure() const = 0;
    QImage makeImage(qreal devicePixelRatio) const override;
    QPointF imageCorner() const override;

private:
    qreal m_size;
    qreal m_lineWidth = 0;
    QColor m_color;
};

/// One icon of the family: `DSGlyph { glyph: Glyph.Merge; color: DS.color.grey }`.
class DSGlyph : public ostra::FigureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(ostra::GlyphNames::Glyph glyph READ glyph WRITE setGlyph NOTIFY glyphChanged FINAL)

public:
    explicit DSGlyph(QQuickItem *parent = nullptr) : FigureItem(12, parent) {}

    Glyph glyph() const { return m_glyph; }
    void setGlyph(Glyph glyph);

signals:
    void glyphChanged();

protected:
    const Figure *figure() const override { return &glyphFigure(m_glyph); }

private:
    Glyph m_glyph = Glyph::Save;
};

/// A platform symbol by its name: `DSSymbol { symbol: "gear"; size: 13 }`. An unknown name draws
/// nothing.
class DSSymbol : public ostra::FigureItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString symbol READ symbol WRITE setSymbol NOTIFY symbolChanged FINAL)

public:
    explicit DSSymbol(QQuickItem *parent = nullptr) : FigureItem(13, parent) {}

    QString symbol() const { return m_symbol; }
    void setSymbol(const QString &symbol);

signals:
    void symbolChanged();

protected:
    const Figure *figure() const override { return symbolFigure(m_symbol); }

private:
    QString m_symbol;
};

/// The logo.
class OstraMark : public ostra::FigureItem {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit OstraMark(QQuickItem *parent = nullptr) : FigureItem(15, parent) {}

protected:
    const Figure *figure() const override { return &ostraMarkFigure(); }
};

/// The icon of "Relaunch Ableton Live".
class AbletonLinesGlyph : public ostra::FigureItem {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit AbletonLinesGlyph(QQuickItem *parent = nullptr) : FigureItem(13, parent) {}

protected:
    const Figure *figure() const override { return &abletonLinesFigure(); }
};

} // namespace ostra
