#include "Design/Glyphs.h"

#include <QHash>
#include <QMetaEnum>
#include <QPainter>

#include <array>

namespace ostra {

namespace {

using Ink = Figure::Ink;

Figure strokes(const Sketch &sketch)
{
    return {{{sketch.path()}}};
}

// A save falls into the tray of history.
Figure save()
{
    return strokes(Sketch()
                       .move(8, 2)
                       .line(8, 10)
                       .move(4.5, 6.75)
                       .line(8, 10.25)
                       .line(11.5, 6.75)
                       .move(2.5, 11)
                       .line(2.5, 13.5)
                       .line(13.5, 13.5)
                       .line(13.5, 11));
}

// A version is a page mark.
Figure version()
{
    return strokes(
        Sketch().move(4, 2.5).line(12, 2.5).line(12, 13.5).line(8, 10.25).line(4, 13.5).close());
}

// Variation and merge are the railway of the graph: time runs to the right.
Figure variation()
{
    return strokes(Sketch()
                       .move(1.75, 11.5)
                       .line(14.25, 11.5)
                       .move(3.5, 11.5)
                       .curve(7, 11.5, 6.5, 4.5, 10, 4.5)
                       .circle(12, 4.5, 2));
}

Figure merge()
{
    return strokes(Sketch()
                       .move(1.75, 11.5)
                       .line(10, 11.5)
                       .circle(12, 11.5, 2)
                       .move(1.75, 4.5)
                       .line(3.5, 4.5)
                       .curve(7.5, 4.5, 6, 11.5, 10, 11.5));
}

Figure restore()
{
    return strokes(
        Sketch().arc(8, 8.25, 5.5, 155, -305).move(2.75, 2.5).line(2.75, 6).line(6.25, 6));
}

Figure watching()
{
    return strokes(Sketch()
                       .move(1.5, 8)
                       .curve(3.5, 4.75, 5.6, 3.5, 8, 3.5)
                       .curve(10.4, 3.5, 12.5, 4.75, 14.5, 8)
                       .curve(12.5, 11.25, 10.4, 12.5, 8, 12.5)
                       .curve(5.6, 12.5, 3.5, 11.25, 1.5, 8)
                       .close()
                       .circle(8, 8, 1.9));
}

// Two hands on the same thing.
Figure conflict()
{
    return strokes(Sketch()
                       .move(1.5, 8)
                       .line(5.5, 8)
                       .move(3.25, 5.5)
                       .line(5.75, 8)
                       .line(3.25, 10.5)
                       .move(14.5, 8)
                       .line(10.5, 8)
                       .move(12.75, 5.5)
                       .line(10.25, 8)
                       .line(12.75, 10.5)
                       .move(8, 2.5)
                       .line(8, 13.5));
}

Figure checkmark()
{
    return strokes(Sketch().move(3, 8.5).line(6.5, 12).line(13, 4.25));
}

Figure xmark()
{
    return strokes(
        Sketch().move(3.75, 3.75).line(12.25, 12.25).move(12.25, 3.75).line(3.75, 12.25));
}

Figure plus()
{
    return strokes(Sketch().move(8, 2.75).line(8, 13.25).move(2.75, 8).line(13.25, 8));
}

Figure chevron(qreal degrees)
{
    return strokes(Sketch().move(10.25, 3).line(5.25, 8).line(10.25, 13).turn(degrees));
}

Figure power()
{
    return strokes(Sketch().move(8, 1.75).line(8, 7.25).arc(8, 8.75, 5.25, 55, -290));
}

Figure pencil()
{
    return strokes(Sketch()
                       .move(2.75, 13.25)
                       .line(3.5, 9.75)
                       .line(10.5, 2.75)
                       .line(13.25, 5.5)
                       .line(6.25, 12.5)
                       .close()
                       .move(8.5, 4.75)
                       .line(11.25, 7.5));
}

Figure gear()
{
    constexpr int kTeeth = 6;
    Sketch rim;
    for (int tooth = 0; tooth < kTeeth; ++tooth) {
        const qreal middle = 360.0 / kTeeth * tooth;
        const auto point = [&](qreal degrees, qreal radius) {
            const QLineF ray = QLineF::fromPolar(radius, degrees);
            if (tooth == 0 && degrees < middle - 16) {
                rim.move(8 + ray.dx(), 8 + ray.dy());
            } else {
                rim.line(8 + ray.dx(), 8 + ray.dy());
            }
        };
        point(middle - 20, 4.75);
        point(middle - 13, 6.75);
        point(middle + 13, 6.75);
        point(middle + 20, 4.75);
    }
    return strokes(rim.close().circle(8, 8, 2));
}

Figure xmarkCircleFill()
{
    return {{{Sketch().circle(8, 8, 6.75).path(), Ink::Fill},
             {Sketch().move(5.6, 5.6).line(10.4, 10.4).move(10.4, 5.6).line(5.6, 10.4).path(),
              Ink::CutStroke}}};
}

Sketch waveform()
{
    return Sketch()
        .move(2.29, 6)
        .line(2.29, 10)
        .move(5.14, 3.5)
        .line(5.14, 12.5)
        .move(8, 1.5)
        .line(8, 14.5)
        .move(10.86, 4)
        .line(10.86, 12)
        .move(13.71, 6.25)
        .line(13.71, 9.75);
}

Figure waveformSlash()
{
    const QPainterPath slash = Sketch().move(2, 2).line(14, 14).path();
    return {{{waveform().path()}, {slash, Ink::CutStroke, 3.2}, {slash}}, 1.0 / 16};
}

Figure waveformBadge()
{
    return {
        {{waveform().path()},
         {Sketch().circle(11.75, 11.5, 4.9).path(), Ink::CutFill},
         {Sketch().circle(11.75, 11.5, 3.75).path(), Ink::Fill},
         {Sketch().move(11.75, 9.5).line(11.75, 11.6).move(11.75, 13.3).line(11.75, 13.31).path(),
          Ink::CutStroke, 0.9}},
        1.0 / 13};
}

Figure progress()
{
    return strokes(Sketch().arc(8, 8, 6, 90, -270));
}

Sketch diamond()
{
    return Sketch().move(8, 1.75).line(14.25, 8).line(8, 14.25).line(1.75, 8).close();
}

Figure diamondFill()
{
    return {{{diamond().path(), Ink::Fill}}};
}

const QHash<QString, Figure> &symbols()
{
    static const QHash<QString, Figure> all{
        {QStringLiteral("arrow.counterclockwise"), restore()},
        {QStringLiteral("checkmark"), checkmark()},
        {QStringLiteral("chevron.left"), chevron(0)},
        {QStringLiteral("chevron.up"), chevron(90)},
        {QStringLiteral("chevron.right"), chevron(180)},
        {QStringLiteral("chevron.down"), chevron(270)},
        {QStringLiteral("diamond"), strokes(diamond())},
        {QStringLiteral("diamond.fill"), diamondFill()},
        {QStringLiteral("gear"), gear()},
        {QStringLiteral("pencil"), pencil()},
        {QStringLiteral("plus"), plus()},
        {QStringLiteral("power"), power()},
        {QStringLiteral("progress"), progress()},
        {QStringLiteral("waveform.badge.exclamationmark"), waveformBadge()},
        {QStringLiteral("waveform.slash"), waveformSlash()},
        {QStringLiteral("xmark"), xmark()},
        {QStringLiteral("xmark.circle.fill"), xmarkCircleFill()},
    };
    return all;
}

} // namespace

QString toString(Glyph glyph)
{
    return QString::fromLatin1(QMetaEnum::fromType<Glyph>().valueToKey(static_cast<int>(glyph)))
        .toLower();
}

const Figure &glyphFigure(Glyph glyph)
{
    static const std::array<Figure, 7> all{save(),    version(),  variation(), merge(),
                                           restore(), watching(), conflict()};
    return all.at(static_cast<size_t>(glyph));
}

const Figure &abletonLinesFigure()
{
    // A pitch of two pixels at the usual thirteen points.
    static const Figure figure = strokes(Sketch()
                                             .move(1.85, 2.5)
                                             .line(1.85, 13.5)
                                             .move(4.31, 2.5)
                                             .line(4.31, 13.5)
                                             .move(6.77, 2.5)
                                             .line(6.77, 13.5)
                                             .move(9.25, 3)
                                             .line(14.25, 3)
                                             .move(9.25, 8)
                                             .line(14.25, 8)
                                             .move(9.25, 13)
                                             .line(14.25, 13));
    return figure;
}

// A shell grown ring around ring, with its pearl: a history, and an O.
const Figure &ostraMarkFigure()
{
    static const Figure figure{{{Sketch().circle(8, 8, 7).circle(8, 10.5, 4.5).turn(45).path()},
                                {Sketch().circle(8, 10.5, 1.75).turn(45).path(), Ink::Fill}},
                               1.25 / 15};
    return figure;
}

const Figure *symbolFigure(const QString &name)
{
    const auto found = symbols().constFind(name);
    return found == symbols().cend() ? nullptr : &*found;
}

QStringList symbolNames()
{
    QStringList names = symbols().keys();
    names.sort();
    return names;
}

void paintOstraMark(QPainter &painter, const QRectF &frame, qreal lineWidth, const QColor &color)
{
    paintFigure(painter, ostraMarkFigure(), frame, lineWidth, color);
}

} // namespace ostra
