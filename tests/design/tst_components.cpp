#include "Design/AccessibleItem.h"
#include "Design/DesignSystem.h"
#include "Design/DSHelp.h"

#include <QAccessible>
#include <QAnimationDriver>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

Q_IMPORT_QML_PLUGIN(Ostra_DesignPlugin)

namespace {

/// Time of animations, moved by hand.
class Steps : public QAnimationDriver {
public:
    Steps() { install(); }
    qint64 elapsed() const override { return m_now; }
    void pass(int milliseconds)
    {
        for (int i = 0; i < milliseconds; i += 10) {
            // Animations that were just started join at the next turn of the event loop.
            QCoreApplication::processEvents();
            m_now += 10;
            advanceAnimation();
        }
    }

private:
    qint64 m_now = 0;
};

/// A window with one thing in it, `subject`.
class Stage {
public:
    explicit Stage(const QByteArray &made)
    {
        m_engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
        QQmlComponent component(&m_engine);
        component.setData("import QtQuick; import Ostra.Design\n"
                          "Window { width: 300; height: 200; property QtObject subject: " +
                              made + "; contentItem.children: [subject] }",
                          QUrl());
        m_window.reset(qobject_cast<QQuickWindow *>(component.create()));
        if (!m_window) {
            qFatal("%s", qPrintable(component.errorString()));
        }
        subject()->setPosition({20, 20});
        m_window->show();
        QTest::mouseMove(m_window.get(), {290, 190});
        m_shown = QTest::qWaitForWindowActive(m_window.get());
    }

    bool shown() const { return m_shown; }
    QQuickWindow *window() const { return m_window.get(); }
    QQuickItem *subject() const { return m_window->property("subject").value<QQuickItem *>(); }
    QVariant get(const char *name) const { return subject()->property(name); }
    QQuickItem *part(const char *name) const { return get(name).value<QQuickItem *>(); }
    ostra::DesignSystem *ds() { return ostra::DesignSystem::of(m_window.get()); }
    QPoint middle() const
    {
        return subject()->mapToScene({subject()->width() / 2, subject()->height() / 2}).toPoint();
    }
    void hover() const { QTest::mouseMove(m_window.get(), middle()); }
    void click() const { QTest::mouseClick(m_window.get(), Qt::LeftButton, {}, middle()); }
    void key(Qt::Key key) const { QTest::keyClick(m_window.get(), key); }

private:
    QQmlEngine m_engine;
    std::unique_ptr<QQuickWindow> m_window;
    bool m_shown = false;
};

QColor colorOf(const QQuickItem *item)
{
    return item->property("color").value<QColor>();
}

QColor borderOf(const QQuickItem *item)
{
    return item->property("borderColor").value<QColor>();
}

bool isInTree(QQuickItem *item)
{
    const QAccessibleInterface *window = QAccessible::queryAccessibleInterface(item->window());
    for (int i = 0; i < window->childCount(); ++i) {
        if (window->child(i)->object() == item) {
            return true;
        }
    }
    return false;
}

QList<QQuickItem *> withSymbol(QQuickItem *root, const QString &symbol)
{
    QList<QQuickItem *> found;
    for (QQuickItem *item : root->childItems()) {
        if (item->property("symbol").toString() == symbol && item->isVisible()) {
            found += item;
        }
        found += withSymbol(item, symbol);
    }
    return found;
}

} // namespace

class TestComponents : public QObject {
    Q_OBJECT

private slots:
    void buttonStylesHaveTheirColours_data();
    void buttonStylesHaveTheirColours();
    void aButtonIsItsTextWithItsPadding();
    void theWholeButtonIsItsHitArea();
    void aHoveredGhostButtonIsRaised();
    void aDisabledDestructiveButtonIsDimAndShowsNoHover();
    void aDisabledButtonAnswersNothing();
    void returnAndSpacePressAButtonOnce();
    void focusIsMarkedWhenTheKeyboardGaveIt();
    void aSpinnerThatLivesShortlyIsNeverSeen();
    void aSpinnerIsSeenAfterItsDelayAndTurns();
    void aSpinnerOutOfSightDoesNotTurn();
    void aSpinnerStandsStillUnderReducedMotion();
    void aMenuTicksTheSelectedRowOnly();
    void aMenuWithoutAMatchingSelectionTicksNothing();
    void choosingARowSaysItsTag();
    void aStateSquareHasItsLook_data();
    void aStateSquareHasItsLook();
    void aStateSquareIsReadOnlyWithAText();
    void aSectionLabelShoutsItsTitle();
    void aGlyphStandsBeforeTheTitleOfASection();
    void aClosedMenuShowsItsSelectionOnPaper();
    void controlsAreSetInTheirFaceAndSize_data();
    void controlsAreSetInTheirFaceAndSize();
    void aDividerIsAHairline();
    void aBoxHasASharpBorderAndRoundCorners();
    void aHighlightFollowsThePointer();
    void anUnchangedSongHasADimMarkAndNoSquare();
    void aChangedSongHasABrightMarkWithASquare();
    void helpShowsWhileThePointerRests();
    void helpGoesWithItsItem();
    void revealedContentExistsOnlyWhileShown();
    void underReducedMotionContentIsThereAtOnce();
    void aFieldSubmitsWithReturnAndCancelsWithEscape();
    void aFieldThatTakesTheKeyboardHasItAtOnce();
    void aLongTextLeavesTheEdgesOfItsFieldAlone_data();
    void aLongTextLeavesTheEdgesOfItsFieldAlone();
    void rowsAreAskedNotTicked();
};

void TestComponents::buttonStylesHaveTheirColours_data()
{
    QTest::addColumn<QByteArray>("style");
    QTest::addColumn<QRgb>("text");
    QTest::addColumn<QRgb>("ground");
    QTest::addColumn<QRgb>("border");
    using namespace ostra::DS::Color;
    QTest::newRow("primary") << QByteArray("Primary") << paper << accent << QRgb(0);
    QTest::newRow("ghost") << QByteArray("Ghost") << accent << QRgb(0) << accentEdge;
    QTest::newRow("destructive") << QByteArray("Destructive") << danger << QRgb(0) << danger;
}

void TestComponents::buttonStylesHaveTheirColours()
{
    QFETCH(QByteArray, style);
    QFETCH(QRgb, text);
    QFETCH(QRgb, ground);
    QFETCH(QRgb, border);
    const Stage stage("DSButton { title: 'Delete'; style: DSButton." + style + " }");
    QCOMPARE(colorOf(stage.part("contentItem")).rgb(), text);
    const QColor fill = colorOf(stage.part("background"));
    QCOMPARE(fill.alpha() == 0 ? QRgb(0) : fill.rgba(), ground);
    QCOMPARE(stage.part("background")->property("borderWidth").toInt(), border == 0 ? 0 : 1);
    if (border != 0) {
        QCOMPARE(borderOf(stage.part("background")).rgb(), border);
    }
    QCOMPARE(borderOf(stage.part("background")).alpha() < 255, style == "Destructive");
}

void TestComponents::aButtonIsItsTextWithItsPadding()
{
    const Stage stage("DSButton { title: 'Save' }");
    const QQuickItem *text = stage.part("contentItem");
    QCOMPARE(stage.subject()->width(), text->implicitWidth() + 22);
    QCOMPARE(stage.subject()->height(), text->implicitHeight() + 12);
    QCOMPARE(text->property("font").value<QFont>().weight(), QFont::DemiBold);
    QCOMPARE(text->property("lineCount").toInt(), 1);
}

void TestComponents::theWholeButtonIsItsHitArea()
{
    const Stage stage("DSButton { title: 'Save' }");
    QSignalSpy clicked(stage.subject(), SIGNAL(clicked()));
    QTest::mouseClick(stage.window(), Qt::LeftButton, {}, {21, 21});
    QTest::mouseClick(
        stage.window(), Qt::LeftButton, {},
        {qFloor(stage.subject()->width()) + 19, qFloor(stage.subject()->height()) + 19});
    QCOMPARE(clicked.count(), 2);
}

void TestComponents::aHoveredGhostButtonIsRaised()
{
    const Stage stage("DSButton { title: 'Save'; style: DSButton.Ghost }");
    stage.hover();
    QTRY_COMPARE(colorOf(stage.part("background")).rgba(), ostra::DS::Color::paper2);
    QTest::mouseMove(stage.window(), {290, 190});
    QTRY_COMPARE(colorOf(stage.part("background")).alpha(), 0);
}

void TestComponents::aDisabledDestructiveButtonIsDimAndShowsNoHover()
{
    const Stage stage("DSButton { title: 'Delete'; style: DSButton.Destructive; enabled: false }");
    stage.hover();
    QCOMPARE(colorOf(stage.part("background")).alpha(), 0);
    QCOMPARE(stage.subject()->opacity(), 0.55);
    stage.subject()->setEnabled(true);
    QCOMPARE(stage.subject()->opacity(), 1.0);
}

void TestComponents::aDisabledButtonAnswersNothing()
{
    const Stage stage("DSButton { title: 'Delete'; enabled: false; focus: true }");
    QSignalSpy clicked(stage.subject(), SIGNAL(clicked()));
    stage.click();
    stage.key(Qt::Key_Return);
    stage.key(Qt::Key_Space);
    QAccessible::queryAccessibleInterface(stage.subject())
        ->actionInterface()
        ->doAction(QAccessibleActionInterface::pressAction());
    QCOMPARE(clicked.count(), 0);
}

void TestComponents::returnAndSpacePressAButtonOnce()
{
    const Stage stage("DSButton { title: 'Save'; focus: true }");
    QVERIFY(stage.shown());
    QSignalSpy clicked(stage.subject(), SIGNAL(clicked()));
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        stage.key(key);
    }
    QCOMPARE(clicked.count(), 3);
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, {}, QString(), true);
    QCoreApplication::sendEvent(stage.window(), &held);
    QCOMPARE(clicked.count(), 3);
}

void TestComponents::focusIsMarkedWhenTheKeyboardGaveIt()
{
    const Stage stage("DSButton { title: 'Save' }");
    stage.click();
    QVERIFY(stage.subject()->hasActiveFocus());
    QVERIFY(!stage.get("focusShown").toBool());
    stage.subject()->setFocus(false);
    QVERIFY(!stage.subject()->hasActiveFocus());
    stage.key(Qt::Key_Tab);
    QVERIFY(stage.get("focusShown").toBool());
}

void TestComponents::aSpinnerThatLivesShortlyIsNeverSeen()
{
    Steps steps;
    const Stage stage("DSDelayedSpinner {}");
    steps.pass(100);
    QVERIFY(!stage.get("shown").toBool());
    stage.subject()->setVisible(false);
    steps.pass(1000);
    QVERIFY(!stage.get("shown").toBool());
}

void TestComponents::aSpinnerIsSeenAfterItsDelayAndTurns()
{
    Steps steps;
    const Stage stage("DSDelayedSpinner {}");
    steps.pass(140);
    QVERIFY(!stage.get("shown").toBool());
    steps.pass(200);
    QVERIFY(stage.get("shown").toBool());
    const QVariant turn = stage.get("turn");
    steps.pass(200);
    QVERIFY(stage.get("turn") != turn);
}

void TestComponents::aSpinnerOutOfSightDoesNotTurn()
{
    Steps steps;
    const Stage stage("DSDelayedSpinner {}");
    steps.pass(500);
    stage.window()->hide();
    const QVariant turn = stage.get("turn");
    steps.pass(500);
    QCOMPARE(stage.get("turn"), turn);
}

void TestComponents::aSpinnerStandsStillUnderReducedMotion()
{
    Steps steps;
    Stage stage("DSDelayedSpinner {}");
    stage.ds()->setReducedMotion(true);
    steps.pass(500);
    QVERIFY(stage.get("shown").toBool());
    QCOMPARE(stage.get("turn").toReal(), 0.0);
}

void TestComponents::aMenuTicksTheSelectedRowOnly()
{
    const Stage stage("DSMenuPicker { name: 'from'; options: ['main', 'alt']; selection: 'alt' }");
    QVERIFY(withSymbol(stage.subject(), QStringLiteral("chevron.down")).size() == 1);
    stage.click();
    QTRY_VERIFY(stage.get("open").toBool());
    QTRY_COMPARE(withSymbol(stage.window()->contentItem(), QStringLiteral("checkmark")).size(), 1);
}

void TestComponents::aMenuWithoutAMatchingSelectionTicksNothing()
{
    const Stage stage("DSMenuPicker { name: 'from'; options: ['main', 'alt']; selection: 'gone' }");
    stage.click();
    QTRY_VERIFY(stage.get("open").toBool());
    QTRY_COMPARE(stage.part("list")->property("count").toInt(), 2);
    QCOMPARE(withSymbol(stage.window()->contentItem(), QStringLiteral("checkmark")).size(), 0);
    QCOMPARE(stage.get("description").toString(), QString());
}

void TestComponents::choosingARowSaysItsTag()
{
    const Stage stage("DSMenuPicker { name: 'from'; options: [{tag: 'a', label: 'A'},"
                      " {tag: 'b', label: 'B'}]; selection: 'a' }");
    QSignalSpy picked(stage.subject(), SIGNAL(picked(QString)));
    stage.click();
    QTRY_VERIFY(stage.get("open").toBool());
    stage.key(Qt::Key_Down);
    stage.key(Qt::Key_Return);
    QCOMPARE(picked.count(), 1);
    QCOMPARE(picked.at(0).at(0).toString(), QStringLiteral("b"));
    QCOMPARE(stage.get("selection").toString(), QStringLiteral("a"));
    QTRY_VERIFY(!stage.get("open").toBool());
}

void TestComponents::aStateSquareHasItsLook_data()
{
    QTest::addColumn<QByteArray>("mode");
    QTest::addColumn<QRgb>("fill");
    QTest::addColumn<int>("border");
    QTest::newRow("ostra") << QByteArray("Ostra") << ostra::DS::Color::ostra << 0;
    QTest::newRow("idle") << QByteArray("Idle") << ostra::DS::Color::grey << 0;
    QTest::newRow("off") << QByteArray("Off") << QRgb(0) << 1;
}

void TestComponents::aStateSquareHasItsLook()
{
    QFETCH(QByteArray, mode);
    QFETCH(QRgb, fill);
    QFETCH(int, border);
    const Stage stage("DSStateSquare { size: 6; mode: DSStateSquare." + mode + " }");
    const QQuickItem *square = stage.subject()->childItems().constFirst();
    QCOMPARE(square->size(), QSizeF(6, 6));
    QCOMPARE(square->y(), -1.0);
    const QColor color = colorOf(square);
    QCOMPARE(color.alpha() == 0 ? QRgb(0) : color.rgba(), fill);
    QCOMPARE(square->property("borderWidth").toInt(), border);
    QCOMPARE(borderOf(square).rgba(), ostra::DS::Color::greyDim);
}

void TestComponents::aStateSquareIsReadOnlyWithAText()
{
    const Stage plain("DSStateSquare {}");
    QVERIFY(!isInTree(plain.subject()));
    const Stage labelled("DSStateSquare { accessibility: 'connected' }");
    QVERIFY(isInTree(labelled.subject()));
    QCOMPARE(QAccessible::queryAccessibleInterface(labelled.subject())->text(QAccessible::Name),
             QStringLiteral("connected"));
}

void TestComponents::aSectionLabelShoutsItsTitle()
{
    const Stage stage("DSSectionLabel { width: 200; title: 'Tracked Projects'; trailing: 'x' }");
    const QAccessibleInterface *window = QAccessible::queryAccessibleInterface(stage.window());
    QCOMPARE(window->childCount(), 2);
    QCOMPARE(window->child(0)->role(), QAccessible::Heading);
    QCOMPARE(window->child(0)->text(QAccessible::Name), QStringLiteral("TRACKED PROJECTS"));
    QCOMPARE(window->child(1)->role(), QAccessible::StaticText);
    QCOMPARE(window->child(1)->text(QAccessible::Name), QStringLiteral("x"));
    const auto *title = static_cast<QQuickItem *>(window->child(0)->object());
    const auto *trailing = static_cast<QQuickItem *>(window->child(1)->object());
    QCOMPARE(title->position(), QPointF(14, 6));
    QCOMPARE(trailing->x() + trailing->width(), 186.0);
    QCOMPARE(stage.subject()->height(), title->height() + 12);
    QCOMPARE(colorOf(title).rgba(), ostra::DS::Color::grey);
    QCOMPARE(colorOf(trailing).rgba(), ostra::DS::Color::greyDim);
}

void TestComponents::aGlyphStandsBeforeTheTitleOfASection()
{
    const Stage stage("DSSectionLabel { width: 200; title: 'Merge'; glyph: Glyph.Merge }");
    const QQuickItem *glyph = stage.subject()->childItems().at(0);
    const QQuickItem *title = stage.subject()->childItems().at(1);
    QVERIFY(glyph->isVisible());
    QCOMPARE(glyph->x(), 14.0);
    QCOMPARE(title->x(), glyph->x() + glyph->width() + 6);
}

void TestComponents::aClosedMenuShowsItsSelectionOnPaper()
{
    const Stage stage("DSMenuPicker { name: 'from'; options: ['main', 'alt']; selection: 'alt' }");
    const QQuickItem *label = stage.part("body")->childItems().constFirst();
    QCOMPARE(label->property("text").toString(), QStringLiteral("alt"));
    QCOMPARE(colorOf(label).rgba(), ostra::DS::Color::ink2);
    QCOMPARE(colorOf(stage.part("background")).rgba(), ostra::DS::Color::paper);
    QCOMPARE(borderOf(stage.part("background")).rgba(), ostra::DS::Color::line);
    QCOMPARE(stage.part("background")->property("borderWidth").toInt(), 1);
}

void TestComponents::controlsAreSetInTheirFaceAndSize_data()
{
    QTest::addColumn<QByteArray>("control");
    QTest::addColumn<QByteArray>("part");
    QTest::addColumn<int>("child");
    QTest::addColumn<qreal>("points");
    QTest::addColumn<int>("weight");
    const auto row = [](const char *name, const char *control, const char *part, int child,
                        qreal points, int weight) {
        QTest::newRow(name) << QByteArray(control) << QByteArray(part) << child << points << weight;
    };
    row("button", "DSButton { title: 'Save' }", "contentItem", -1, 10.5, QFont::DemiBold);
    row("menu", "DSMenuPicker { options: ['a']; selection: 'a' }", "body", 0, 10.5, QFont::Normal);
    row("menu row", "DSMenuRow { label: 'a' }", "body", 1, 10.5, QFont::Normal);
    row("section", "DSSectionLabel { title: 'a' }", "", 1, 10, QFont::Medium);
    row("trailing", "DSSectionLabel { title: 'a'; trailing: 'b' }", "", 2, 10, QFont::Medium);
}

void TestComponents::controlsAreSetInTheirFaceAndSize()
{
    QFETCH(QByteArray, control);
    QFETCH(QByteArray, part);
    QFETCH(int, child);
    QFETCH(qreal, points);
    QFETCH(int, weight);
    const Stage stage(control);
    const QQuickItem *text = part.isEmpty() ? stage.subject() : stage.part(part);
    text = child < 0 ? text : text->childItems().at(child);
    const auto font = text->property("font").value<QFont>();
    QCOMPARE(font.family(), QStringLiteral("IBM Plex Mono"));
    QCOMPARE(font.pointSizeF() * stage.window()->screen()->logicalDotsPerInch() / 72, points);
    QCOMPARE(font.weight(), weight);
}

void TestComponents::aDividerIsAHairline()
{
    const Stage stage("DSDivider { width: 300 }");
    QCOMPARE(stage.subject()->height(), 1.0);
    QCOMPARE(colorOf(stage.subject()).rgba(), ostra::DS::Color::line);
}

void TestComponents::aBoxHasASharpBorderAndRoundCorners()
{
    const Stage stage("DSBox { width: 40; height: 20; radius: 4; color: DS.color.paper2;"
                      " borderColor: DS.color.ink; borderWidth: 1 }");
    const QImage image = stage.window()->grabWindow();
    QCOMPARE(image.pixel(40, 20), ostra::DS::Color::ink);
    QCOMPARE(image.pixel(40, 21), ostra::DS::Color::paper2);
    QCOMPARE(image.pixel(40, 39), ostra::DS::Color::ink);
    QCOMPARE(image.pixel(59, 30), ostra::DS::Color::ink);
    QCOMPARE(image.pixel(20, 20), qRgb(255, 255, 255));
}

void TestComponents::aHighlightFollowsThePointer()
{
    const Stage stage("DSHoverHighlight { width: 100; height: 30 }");
    QCOMPARE(colorOf(stage.subject()).alpha(), 0);
    stage.hover();
    QTRY_COMPARE(colorOf(stage.subject()).rgba(), ostra::DS::Color::paper2);
    QTest::mouseMove(stage.window(), {290, 190});
    QTRY_COMPARE(colorOf(stage.subject()).alpha(), 0);
}

void TestComponents::anUnchangedSongHasADimMarkAndNoSquare()
{
    const Stage stage("SongMark { changed: false }");
    QCOMPARE(stage.subject()->size(), QSizeF(17, 17));
    const QQuickItem *mark = stage.subject()->childItems().at(0);
    QCOMPARE(mark->size(), QSizeF(15, 15));
    QCOMPARE(mark->position(), QPointF(1, 1));
    QCOMPARE(colorOf(mark).rgba(), ostra::DS::Color::greyDim);
    QVERIFY(!stage.subject()->childItems().at(1)->isVisible());
    QCOMPARE(qobject_cast<ostra::DSHelp *>(
                 qmlAttachedPropertiesObject<ostra::DSHelp>(stage.subject(), false))
                 ->text(),
             QStringLiteral("no changes since last version"));
}

void TestComponents::aChangedSongHasABrightMarkWithASquare()
{
    const Stage stage("SongMark { changed: true }");
    QCOMPARE(colorOf(stage.subject()->childItems().at(0)).rgba(), ostra::DS::Color::ink2);
    const QQuickItem *square = stage.subject()->childItems().at(1);
    QVERIFY(square->isVisible());
    QCOMPARE(square->size(), QSizeF(5, 5));
    QCOMPARE(colorOf(square).rgba(), ostra::DS::Color::ostra);
    QCOMPARE(qobject_cast<ostra::DSHelp *>(
                 qmlAttachedPropertiesObject<ostra::DSHelp>(stage.subject(), false))
                 ->text(),
             QStringLiteral("unsaved changes"));
}

void TestComponents::helpShowsWhileThePointerRests()
{
    const Stage stage("DSIconButton { symbol: 'gear'; help: 'Settings' }");
    const auto tip = [&] {
        return stage.window()->property("_ostraToolTip").value<QObject *>();
    };
    stage.hover();
    QTRY_VERIFY(tip() != nullptr && tip()->property("opened").toBool());
    QCOMPARE(tip()->property("text").toString(), QStringLiteral("Settings"));
    QTest::mouseMove(stage.window(), {290, 190});
    QTRY_VERIFY(!tip()->property("visible").toBool());
}

void TestComponents::helpGoesWithItsItem()
{
    const Stage stage("DSIconButton { symbol: 'gear'; help: 'Settings' }");
    const auto tip = [&] {
        return stage.window()->property("_ostraToolTip").value<QObject *>();
    };
    stage.hover();
    QTRY_VERIFY(tip() != nullptr && tip()->property("opened").toBool());
    stage.subject()->setVisible(false);
    QTRY_VERIFY(!tip()->property("visible").toBool());
}

void TestComponents::revealedContentExistsOnlyWhileShown()
{
    Steps steps;
    const Stage stage("DSReveal { width: 100; content: Item { implicitHeight: 40 } }");
    QCOMPARE(stage.part("item"), nullptr);
    QCOMPARE(stage.subject()->height(), 0.0);
    stage.subject()->setProperty("shown", true);
    QVERIFY(stage.part("item") != nullptr);
    QCOMPARE(stage.part("item")->width(), 100.0);
    steps.pass(100);
    QVERIFY(stage.subject()->height() > 0 && stage.subject()->height() < 40);
    steps.pass(120);
    QCOMPARE(stage.subject()->height(), 40.0);
    stage.subject()->setProperty("shown", false);
    QVERIFY(!stage.subject()->isEnabled());
    steps.pass(220);
    QCOMPARE(stage.part("item"), nullptr);
    QVERIFY(!stage.subject()->isVisible());
}

void TestComponents::underReducedMotionContentIsThereAtOnce()
{
    Steps steps;
    Stage stage("DSReveal { width: 100; content: Item { implicitHeight: 40 } }");
    stage.ds()->setReducedMotion(true);
    stage.subject()->setProperty("shown", true);
    QCOMPARE(stage.subject()->height(), 40.0);
    stage.subject()->setProperty("shown", false);
    QCOMPARE(stage.part("item"), nullptr);
}

void TestComponents::aFieldSubmitsWithReturnAndCancelsWithEscape()
{
    const Stage stage("DSTextField { placeholder: 'Version name'; focus: true }");
    QVERIFY(stage.shown());
    QSignalSpy submitted(stage.subject(), SIGNAL(submitted()));
    QSignalSpy cancelled(stage.subject(), SIGNAL(cancelled()));
    for (const char letter : {'m', 'i', 'x'}) {
        QTest::keyClick(stage.window(), letter);
    }
    QCOMPARE(stage.get("text").toString(), QStringLiteral("mix"));
    stage.key(Qt::Key_Return);
    QCOMPARE(submitted.count(), 1);
    stage.key(Qt::Key_Escape);
    QCOMPARE(cancelled.count(), 1);
}

void TestComponents::aFieldThatTakesTheKeyboardHasItAtOnce()
{
    Steps steps;
    const Stage stage("DSReveal { width: 100; content: DSTextField { takesFocus: true } }");
    stage.subject()->setProperty("shown", true);
    QVERIFY(stage.part("item")->hasActiveFocus());
}

void TestComponents::aLongTextLeavesTheEdgesOfItsFieldAlone_data()
{
    QTest::addColumn<int>("cursor");
    QTest::newRow("its end is seen") << 40;
    QTest::newRow("its middle is seen") << 20;
    QTest::newRow("its beginning is seen") << 0;
}

void TestComponents::aLongTextLeavesTheEdgesOfItsFieldAlone()
{
    QFETCH(int, cursor);
    const Stage stage("DSTextField { width: 100; text: 'M'.repeat(40) }");
    stage.subject()->setProperty("cursorPosition", cursor);
    const QImage image = stage.window()->grabWindow();
    const QRect field(20, 20, 100, qRound(stage.subject()->height()));
    for (int y = field.top() + 4; y <= field.bottom() - 4; ++y) {
        for (const int edge : {field.left(), field.right()}) {
            QCOMPARE(image.pixel(edge, y), ostra::DS::Color::line);
        }
        for (int inset = 1; inset <= 4; ++inset) {
            QCOMPARE(image.pixel(field.left() + inset, y), ostra::DS::Color::paper);
            QCOMPARE(image.pixel(field.right() - inset, y), ostra::DS::Color::paper);
        }
    }
}

void TestComponents::rowsAreAskedNotTicked()
{
    for (const char *row : {"DSCheckRow { title: 'x' }", "DSOptionRow { title: 'x' }",
                            "DSSwitch { title: 'x'; width: 200 }"}) {
        const Stage stage(row);
        QSignalSpy clicked(stage.subject(), SIGNAL(clicked()));
        stage.click();
        QCOMPARE(clicked.count(), 1);
        QVERIFY(!QAccessible::queryAccessibleInterface(stage.subject())->state().checked);
        QVERIFY(QAccessible::queryAccessibleInterface(stage.subject())->state().checkable);
    }
}

QTEST_MAIN(TestComponents)
#include "tst_components.moc"
