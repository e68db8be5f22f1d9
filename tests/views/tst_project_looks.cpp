#include "Design/DesignSystem.h"
#include "Design/DSHelp.h"
#include "ViewFixture.h"
#include "Views/MenuBarViewModel.h"

#include <QQmlEngine>
#include <QQuickItem>
#include <QScreen>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

/// Everything under `root` that is on screen, in the order of painting.
QList<QQuickItem *> shownIn(QQuickItem *root)
{
    QList<QQuickItem *> found;
    const QList<QQuickItem *> children = root->childItems();
    for (QQuickItem *child : children) {
        if (child->isVisible()) {
            found << child << shownIn(child);
        }
    }
    return found;
}

QQuickItem *drawing(const ViewFixture &view, const QString &symbol)
{
    for (QQuickItem *item : shownIn(view.view->rootObject())) {
        if (item->inherits("ostra::FigureItem") && item->property("symbol") == symbol) {
            return item;
        }
    }
    qFatal("no %s is drawn", qPrintable(symbol));
}

QQuickItem *text(const ViewFixture &view, const QString &words)
{
    for (QQuickItem *item : shownIn(view.view->rootObject())) {
        if (item->property("text") == words && item->property("font").isValid()) {
            return item;
        }
    }
    qFatal("nothing says %s", qPrintable(words));
}

/// The first of a QML type inside or beside `item`.
QQuickItem *typed(QQuickItem *root, const QByteArray &type)
{
    for (QQuickItem *item : shownIn(root)) {
        if (QByteArray(item->metaObject()->className()).startsWith(type + "_QMLTYPE")) {
            return item;
        }
    }
    qFatal("there is no %s", type.constData());
}

QRectF placeOf(const QQuickItem *item)
{
    return item->mapRectToScene({0, 0, item->width(), item->height()});
}

QRectF placeOfButton(ViewFixture &view, const QString &name)
{
    return placeOf(qobject_cast<QQuickItem *>(view.find(QAccessible::Button, name)->object()));
}

QRgb colorOf(const QQuickItem *item)
{
    return item->property("color").value<QColor>().rgba();
}

QString helpOf(QObject *item)
{
    const auto *help = qobject_cast<DSHelp *>(qmlAttachedPropertiesObject<DSHelp>(item, false));
    return help ? help->text() : QString();
}

/// "IBM Plex Mono 10.5 400 #8f897c": family, points, weight and colour.
QString lookOf(const QQuickItem *text)
{
    const auto font = text->property("font").value<QFont>();
    const qreal points = font.pointSizeF() * text->window()->screen()->logicalDotsPerInch() / 72;
    return u"%1 %2 %3 %4"_s.arg(font.family())
        .arg(points)
        .arg(font.weight())
        .arg(text->property("color").value<QColor>().name());
}

const RepoJson kDemo{.name = u"Demo"_s,
                     .songs = {SongJson{.filename = u"Mix.als"_s, .changed = true},
                               SongJson{.filename = u"Intro.als"_s, .lastVersion = u"v1"_s}}};

} // namespace

/// The sizes, faces, colours and paddings that are fixed for the project views.
class TestProjectLooks : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { qputenv("HOME", "/home/ada"); }

    void textsHaveTheirFaceSizeWeightAndColour()
    {
        ViewFixture view;
        view.setStatus({kDemo}, {discoveredJson(u"Old Ideas"_s, 3)});
        view.service.answer(
            u"version_list"_s,
            Answer::line(R"({"type":"versions","versions":[)"
                         R"({"name":"mix-v1","created":"2025-03-04T10:00:00Z","songs":[]},)"
                         R"({"name":"auto/1","created":"2025-03-04T10:00:00Z","songs":[]}]})"));
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Album versions"_s);
        view.press(u"Relaunch Ableton Live"_s);
        const std::pair<QString, QString> looks[] = {
            {u"OSTRA"_s, u"IBM Plex Mono 13 600 #ece7da"_s},
            {u"Ableton will be relaunched"_s, u"IBM Plex Mono 10.5 400 #d6d0c2"_s},
            {u"TRACKED PROJECTS"_s, u"IBM Plex Mono 10 500 #8f897c"_s},
            {u"Demo"_s, u"Inter 13.5 600 #ece7da"_s},
            {u"2 songs"_s, u"IBM Plex Mono 10.5 400 #8f897c"_s},
            {u"1 changed"_s, u"IBM Plex Mono 10.5 400 #8f897c"_s},
            {u"Mix"_s, u"IBM Plex Mono 10.5 400 #d6d0c2"_s},
            {u"main · v1"_s, u"IBM Plex Mono 9 400 #8f897c"_s},
            {u"Album versions"_s, u"IBM Plex Mono 10.5 400 #d6d0c2"_s},
            {u"current · mix-v1"_s, u"IBM Plex Mono 10.5 400 #8f897c"_s},
            {u"CURRENT"_s, u"IBM Plex Mono 10 400 #8f897c"_s},
            {u"mix-v1"_s, u"IBM Plex Mono 10.5 400 #d6d0c2"_s},
            {u"safety snapshots (1)"_s, u"IBM Plex Mono 10.5 400 #8f897c"_s},
            {u"daemon · watching 1 project"_s, u"IBM Plex Mono 10.5 400 #8f897c"_s},
            {u"v1.0.0"_s, u"IBM Plex Mono 10.5 400 #6b665d"_s}};
        for (const auto &[words, look] : looks) {
            QVERIFY2(lookOf(text(view, words)) == look,
                     qPrintable(words + u": "_s + lookOf(text(view, words))));
        }
        view.press(u"Demo"_s); // brings the end of the list into view
        QCOMPARE(lookOf(text(view, u"Old Ideas"_s)), u"Inter 13.5 600 #ece7da"_s);
        QCOMPARE(lookOf(text(view, u"UNTRACKED · 3 SETS"_s)), u"IBM Plex Mono 10.5 400 #8f897c"_s);
        const QFont title = text(view, u"OSTRA"_s)->property("font").value<QFont>();
        QVERIFY(qAbs(title.letterSpacing() - 1.4) < 1.0 / 64); // as fine as fonts count
    }

    void theHeaderHoldsTheMarkAndThreeButtons()
    {
        ViewFixture view;
        view.show();
        QQuickItem *header = typed(view.view->rootObject(), "HeaderBar");
        const QQuickItem *mark = header->childItems().constFirst();
        QCOMPARE(mark->size(), QSizeF(15, 15));
        QCOMPARE(colorOf(mark), DS::Color::ink2);
        for (const QString &name : {u"Relaunch Ableton Live"_s, u"Settings"_s, u"Quit OSTRA"_s}) {
            QCOMPARE(placeOfButton(view, name).size(), QSizeF(24, 24));
        }
        QVERIFY(drawing(view, u"gear"_s));
        QVERIFY(drawing(view, u"power"_s));
    }

    void theFooterKeepsItsPaddingsAndItsSquareFollowsTheConnection()
    {
        ViewFixture view;
        view.show();
        const auto modeOfSquare = [&view] {
            return typed(typed(view.view->rootObject(), "StatusFooter"), "DSStateSquare");
        };
        QQuickItem *footer = typed(view.view->rootObject(), "StatusFooter");
        const QRectF place = placeOf(footer);
        const QRectF detail = placeOf(text(view, u"daemon · watching 0 projects"_s));
        const QRectF version = placeOf(text(view, u"v1.0.0"_s));
        const QQuickItem *divider = footer->childItems().constFirst();
        QCOMPARE(placeOf(divider), QRectF(0, place.top(), 360, 1));
        QCOMPARE(detail.top(), place.top() + 1 + 8);
        QCOMPARE(detail.bottom(), place.bottom() - 8);
        QCOMPARE(version.right(), 360.0 - 14);
        const QQuickItem *square = modeOfSquare();
        QCOMPARE(square->size(), QSizeF(6, 6));
        QCOMPARE(placeOf(square).left(), 14.0);
        QCOMPARE(detail.left(), 14.0 + 6 + 6);
        enum Mode { ostraMode, idleMode, offMode };
        QCOMPARE(square->property("mode").toInt(), ostraMode);
        view.loseService();
        QCOMPARE(square->property("mode").toInt(), offMode);
        view.service.start();
        view.daemon->retry();
        QCOMPARE(square->property("mode").toInt(), idleMode);
    }

    void theRelaunchConfirmationKeepsItsPaddings()
    {
        ViewFixture view;
        view.show();
        view.press(u"Relaunch Ableton Live"_s);
        QQuickItem *row = typed(view.view->rootObject(), "RelaunchConfirmation");
        const QRectF place = placeOf(row);
        QCOMPARE(place.left(), 0.0);
        QCOMPARE(place.width(), 360.0);
        QCOMPARE(colorOf(row), DS::Color::paper2);
        QCOMPARE(placeOf(text(view, u"Ableton will be relaunched"_s)).left(), 14.0);
        const QRectF yes = placeOfButton(view, u"Relaunch now"_s);
        const QRectF no = placeOfButton(view, u"Keep Ableton as it is"_s);
        QCOMPARE(yes.size(), QSizeF(24, 24));
        QCOMPARE(no.size(), QSizeF(24, 24));
        QCOMPARE(no.left() - yes.right(), 8.0);
        QCOMPARE(no.right(), 360.0 - 14);
        QCOMPARE(no.top(), place.top() + 6);
        QCOMPARE(no.bottom(), place.bottom() - 6);
        const QQuickItem *divider = typed(row, "DSDivider");
        QCOMPARE(placeOf(divider), QRectF(0, place.bottom() - 1, 360, 1));
        // Heavier than what the figures take by themselves.
        QCOMPARE(drawing(view, u"checkmark"_s)->property("lineWidth"), 1.5);
        QCOMPARE(drawing(view, u"xmark"_s)->property("lineWidth"), 1.5);
    }

    void theEmptyStateIsACentredStack()
    {
        ViewFixture view;
        view.show();
        const QQuickItem *symbol = drawing(view, u"waveform.slash"_s);
        QCOMPARE(symbol->property("size").toReal(), 28.0);
        QCOMPARE(colorOf(symbol), DS::Color::line);
        QCOMPARE(placeOf(symbol).center().x(), 180.0);
        const QQuickItem *title = text(view, u"No projects tracked yet"_s);
        QCOMPARE(lookOf(title), u"Inter 13.5 600 #ece7da"_s);
        QVERIFY(qAbs(placeOf(title).center().x() - 180) <= 0.5);
        const QQuickItem *message = text(
            view,
            u"Open an Ableton set in a watched folder and OSTRA starts versioning every save."_s);
        QCOMPARE(lookOf(message), u"IBM Plex Mono 10.5 400 #8f897c"_s);
        QCOMPARE(placeOf(message).left(), 65.0);
        QCOMPARE(message->width(), 230.0);
        QVERIFY(message->property("lineCount").toInt() > 1);
        QCOMPARE(message->property("horizontalAlignment").toInt(), int(Qt::AlignHCenter));
        auto *button = qobject_cast<QQuickItem *>(
            view.find(QAccessible::Button, u"choose folder"_s)->object());
        QCOMPARE(button->property("style").toInt(), 1); // ghost
        QCOMPARE(button->position(), QPointF(4, 4));
        QCOMPARE(button->parentItem()->size(), button->size() + QSizeF(8, 8));
    }

    void theHeadLineOfACardHasItsTileAndItsPencil()
    {
        ViewFixture view;
        view.setStatus({kDemo});
        view.show();
        QQuickItem *diamond = drawing(view, u"diamond.fill"_s);
        QCOMPARE(colorOf(diamond), DS::Color::ink2);
        const QQuickItem *tile = diamond->parentItem();
        QCOMPARE(tile->size(), QSizeF(26, 26));
        QCOMPARE(colorOf(tile), DS::Color::paper3);
        QCOMPARE(tile->property("borderColor").value<QColor>(), QColor::fromRgb(DS::Color::line));
        const QQuickItem *pencil = drawing(view, u"pencil"_s);
        QCOMPARE(pencil->property("size").toReal(), 9.0);
        QCOMPARE(colorOf(pencil), DS::Color::grey);
        const QRectF button = placeOfButton(view, u"Rename project"_s);
        QCOMPARE(button.size(), QSizeF(18, 18));
        const QQuickItem *nameText = text(view, u"Demo"_s);
        QRectF name = placeOf(nameText);
        name.setWidth(nameText->implicitWidth());
        QVERIFY(button.left() >= name.right() && button.left() < name.right() + 10);
        QVERIFY(placeOf(text(view, u"2 songs"_s)).top() >= name.bottom());
        const QQuickItem *count = text(view, u"1 changed"_s);
        QQuickItem *square = typed(count->parentItem(), "DSStateSquare");
        QCOMPARE(square->property("mode").toInt(), 0); // ostra
        QCOMPARE(square->size(), QSizeF(6, 6));
        QCOMPARE(placeOf(count).left() - placeOf(square).right(), 6.0);
        QCOMPARE(placeOf(count).right(), 360.0 - 14);
    }

    void aSongRowHasItsMarkAndAGhostButton()
    {
        ViewFixture view;
        view.setStatus({kDemo});
        view.show();
        view.press(u"Demo"_s);
        QCOMPARE(typed(view.view->rootObject(), "SongMark")->size(), QSizeF(17, 17));
        auto *save =
            qobject_cast<QQuickItem *>(view.find(QAccessible::Button, u"Save"_s)->object());
        QCOMPARE(save->property("style").toInt(), 1); // ghost
        const QQuickItem *title = text(view, u"Save"_s);
        QCOMPARE(save->size(), title->size() + QSizeF(22, 12));
    }

    void whatTheHeadLineCutsShortIsInItsHelp()
    {
        const QString longName = u"The Night Drive and All the Other Songs We Never Finished"_s;
        QJsonArray songs;
        for (int i = 0; i < 1000; ++i) {
            songs << SongJson{
                .filename = u"%1.als"_s.arg(i), .changed = true, .savedAgo = 40 * 86400};
        }
        ViewFixture view;
        view.setStatus({kDemo,
                        RepoJson{.name = longName, .songs = {SongJson{.filename = u"a.als"_s}}},
                        RepoJson{.name = u"Big"_s, .songs = songs, .sizeBytes = 999'900'000'000}});
        view.show();
        const auto help = [&view](const QString &name) {
            return view.find(QAccessible::Button, name)->object()->property("help").toString();
        };
        QCOMPARE(help(u"Demo"_s), QString());
        QCOMPARE(help(longName), longName);
        const QString line =
            view.find(QAccessible::Button, u"Big"_s)->text(QAccessible::Description);
        QVERIFY2(line.startsWith(u"1000 songs · 999.9 GB · "_s), qPrintable(line));
        QCOMPARE(help(u"Big"_s), line);
    }

    void whatTheRowsOfACardCutShortIsInTheirHelp()
    {
        const QString longName = u"The Night Drive and All the Other Songs We Never Finished"_s;
        ViewFixture view;
        view.service.answer(
            u"version_list"_s,
            Answer::line(R"({"type":"versions","versions":[)"
                         R"({"name":"the mix that went to the mastering engineer in the end",)"
                         R"("created":"2025-03-04T10:00:00Z","songs":[]}]})"));
        view.setStatus(
            {RepoJson{.name = u"Demo"_s,
                      .songs = {SongJson{.filename = u"Mix.als"_s, .lastVersion = u"v1"_s},
                                SongJson{.filename = longName + u".als"_s, .lastVersion = longName},
                                SongJson{.filename = u"Intro.als"_s, .lastVersion = longName}}}});
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Album versions"_s);
        const auto help = [&view](const QString &words) {
            return helpOf(text(view, words)->parentItem());
        };
        const QString line =
            view.find(QAccessible::Button, longName)->text(QAccessible::Description);
        QCOMPARE(line, u"main · "_s + longName);
        QCOMPARE(help(u"Mix"_s), QString());
        QCOMPARE(help(longName), longName + u'\n' + line);
        QCOMPARE(help(u"Intro"_s), line);

        const auto *strip = view.find(QAccessible::Button, u"Album versions"_s)->object();
        const QString current =
            u"current · the mix that went to the mastering engineer in the end"_s;
        QCOMPARE(strip->property("help").toString(), current);
    }

    void aTimeThatIsNoneLeavesRoomForTheNameOfItsVersion()
    {
        const QString created = u"some time in the spring, before the drummer had left the band"_s;
        ViewFixture view;
        view.service.answer(
            u"version_list"_s,
            Answer::line(R"({"type":"versions","versions":[)"
                         R"({"name":"the first rough sequence","songs":[],"created":")" +
                         created.toUtf8() + R"("}]})"));
        view.setStatus({kDemo});
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Album versions"_s);
        const QQuickItem *row = typed(view.view->rootObject(), "VersionRow");
        QQuickItem *date = text(view, created);
        QVERIFY2(date->width() <= row->width() / 3, qPrintable(QString::number(date->width())));
        QCOMPARE(helpOf(date), created);
    }

    void theMarkOfASongTellsItsStateAndLeavesTheRowLit()
    {
        ViewFixture view;
        view.setStatus({kDemo});
        view.show();
        view.press(u"Demo"_s);
        QQuickItem *mark = typed(view.view->rootObject(), "SongMark");
        QCOMPARE(helpOf(mark), u"unsaved changes"_s);
        auto *row = qobject_cast<QQuickItem *>(view.find(QAccessible::Button, u"Mix"_s)->object());
        QTest::mouseMove(view.view.get(), placeOf(row).center().toPoint());
        QVERIFY(until([&] { return row->property("hot").toBool(); }));
        QTest::mouseMove(view.view.get(), placeOf(mark).center().toPoint());
        view.settle();
        QVERIFY(row->property("hot").toBool());
        QTest::mouseClick(view.view.get(), Qt::LeftButton, {}, placeOf(mark).center().toPoint());
        view.settle();
        QCOMPARE(view.model<MenuBarViewModel>()->openSong(), (SongRoute{u"Demo"_s, u"Mix.als"_s}));
    }

    void aDividerStandsSixPointsUnderTheTrackedProjects()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"Demo"_s}}, {discoveredJson(u"Old Ideas"_s, 3)});
        view.show();
        const qreal above = placeOf(typed(view.view->rootObject(), "RepoCardView")).bottom();
        const QQuickItem *label = text(view, u"DISCOVERED"_s);
        QQuickItem *list = view.view->rootObject()->findChild<QQuickItem *>(u"projectList"_s);
        QCOMPARE(placeOf(typed(list, "DSDivider")), QRectF(0, above + 6, 360, 1));
        QCOMPARE(placeOf(label).top(), above + 7 + 6);
    }

    void theCurrentConfigurationHasASquareThatIsLitWhenItIsSaved()
    {
        ViewFixture view;
        view.setStatus({kDemo});
        view.show();
        view.press(u"Demo"_s);
        view.press(u"Album versions"_s);
        const QQuickItem *label = text(view, u"CURRENT"_s);
        const QQuickItem *square = typed(label->parentItem(), "DSStateSquare");
        QCOMPARE(square->property("mode").toInt(), 1); // idle
        view.service.answer(
            u"version_list"_s,
            Answer::line(R"({"type":"versions","versions":[)"
                         R"({"name":"mix-v1","created":"2025-03-04T10:00:00Z","songs":[]}]})"));
        view.press(u"Settings"_s);
        view.press(u"Settings"_s);
        QCOMPARE(square->property("mode").toInt(), 0); // ostra
    }

    void aWatchedFolderIsOneLineCutInItsMiddleWithItsWholePathAsHelp()
    {
        ViewFixture view;
        view.service.answer(u"watch_path_list"_s,
                            Answer::line(R"({"type":"watch_paths","paths":["/home/ada/Music"]})"));
        view.show();
        view.press(u"Settings"_s);
        QQuickItem *path = text(view, u"~/Music"_s);
        QCOMPARE(lookOf(path), u"IBM Plex Mono 10.5 400 #d6d0c2"_s);
        QCOMPARE(path->property("elide").toInt(), int(Qt::ElideMiddle));
        QCOMPARE(path->property("lineCount").toInt(), 1);
        QCOMPARE(helpOf(path), u"/home/ada/Music"_s);
        const QQuickItem *symbol = drawing(view, u"xmark.circle.fill"_s);
        QCOMPARE(symbol->property("size").toReal(), 11.0);
    }

    void theSettingsAreThreeGroupsBetweenDividers()
    {
        ViewFixture view;
        view.show();
        view.press(u"Settings"_s);
        const std::pair<QString, QString> looks[] = {
            {u"No watch paths configured"_s, u"IBM Plex Mono 10.5 400 #8f897c"_s},
            {u"Scan your entire home directory for Ableton projects. This runs automatically on "
             "first launch."_s,
             u"Inter 12.5 400 #d6d0c2"_s},
            {u"Auto-start the daemon when you log in"_s, u"IBM Plex Mono 10.5 400 #8f897c"_s}};
        for (const auto &[words, look] : looks) {
            QCOMPARE(lookOf(text(view, words)), look);
        }
        QStringList kinds;
        for (const QQuickItem *item :
             typed(view.view->rootObject(), "SettingsView")->childItems()) {
            const QByteArray type = item->metaObject()->className();
            if (item->isVisible() && type.startsWith("DSSectionLabel")) {
                kinds << item->property("title").toString();
            } else if (item->isVisible() && type.startsWith("DSDivider")) {
                kinds << u"—"_s;
            }
        }
        QCOMPARE(kinds, (QStringList{u"Watch Paths"_s, u"—"_s, u"Project Discovery"_s, u"—"_s,
                                     u"Daemon"_s}));
    }

    void panesFadeIntoEachOther()
    {
        ViewFixture view;
        view.show();
        view.moveAsUsers();
        QQuickItem *list = view.view->rootObject()->findChild<QQuickItem *>(u"projectList"_s);
        QList<qreal> seen;
        connect(list, &QQuickItem::opacityChanged, this, [&] { seen << list->opacity(); });
        view.model<MenuBarViewModel>()->setShowSettings(true);
        QVERIFY(list->isVisible());
        QVERIFY(until([&] { return !list->isVisible(); }));
        QVERIFY(seen.size() > 2);
        QVERIFY(std::ranges::is_sorted(seen, std::greater()));
    }

    void bannersFadeAndMoveInFromTheTopEdge()
    {
        ViewFixture view;
        view.show();
        view.moveAsUsers();
        view.model<MenuBarViewModel>()->setConfirmingAbletonRelaunch(true);
        QQuickItem *row = typed(view.view->rootObject(), "RelaunchConfirmation");
        QVERIFY(row->opacity() < 1);
        QVERIFY(row->y() < 0);
        QVERIFY(until([&] { return row->opacity() == 1 && row->y() == 0; }));
    }

    void theListMovesWhenTheNumberOfProjectsChanges()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"B"_s}}, {discoveredJson(u"Old Ideas"_s, 3)});
        view.show();
        view.moveAsUsers();
        QQuickItem *card = typed(view.view->rootObject(), "RepoCardView");
        const qreal before = placeOf(card).top();
        view.setStatus({RepoJson{.name = u"A"_s}, RepoJson{.name = u"B"_s}},
                       {discoveredJson(u"Old Ideas"_s, 3)});
        QList<qreal> tops;
        connect(view.view.get(), &QQuickWindow::afterRendering, this,
                [&] { tops << placeOf(card).top(); });
        view.daemon->refreshAll();
        // Where it belongs at once, and shown there when it has come to rest.
        QVERIFY(until([&] { return tops.size() > 3 && tops.last() == before + 50; }));
        QVERIFY(std::ranges::any_of(tops,
                                    [&](qreal top) { return top > before && top < before + 50; }));
        QVERIFY(std::ranges::is_sorted(tops));
    }

    void aProjectThatComesFadesIn()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"A"_s}});
        view.show();
        view.moveAsUsers();
        view.setStatus({RepoJson{.name = u"A"_s}, RepoJson{.name = u"B"_s}});
        const auto rowOf = [&view](const QString &name) {
            QQuickItem *item = text(view, name);
            while (!item->inherits("ostra::DSSlot")) {
                item = item->parentItem();
            }
            return item;
        };
        const QQuickItem *stays = rowOf(u"A"_s);
        QList<qreal> seen;
        connect(view.view.get(), &QQuickWindow::afterRendering, this, [&] {
            QCOMPARE(stays->opacity(), 1.0);
            if (view.has(QAccessible::Button, u"B"_s)) {
                seen << rowOf(u"B"_s)->opacity();
            }
        });
        view.daemon->refreshAll();
        QVERIFY(until([&] { return !seen.isEmpty() && seen.last() == 1; }));
        QVERIFY(seen.first() < 0.5);
        QVERIFY(std::ranges::is_sorted(seen));
    }

    void rowsThatComeBeforeTheListIsPaintedAreJustThere()
    {
        QQuickView window;
        window.engine()->addImportPath(u"qrc:/qt/qml"_s);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        QVERIFY(until([&] { return window.isSceneGraphInitialized(); }));
        QQmlComponent component(window.engine());
        component.setData("import QtQuick; import Ostra.Design; import Ostra.Views;"
                          "Item { id: rows; property alias motion: motion; width: 9; height: 9;"
                          "  property Component row: DSSlot {"
                          "    sourceComponent: Item { implicitHeight: 9 } }"
                          "  RowMotion { id: motion; container: rows } }",
                          {});
        const std::unique_ptr<QQuickItem> list(
            qobject_cast<QQuickItem *>(component.createWithInitialProperties(
                {{u"parent"_s, QVariant::fromValue(window.contentItem())}})));
        QVERIFY2(list, qPrintable(component.errorString()));
        const auto add = [&] {
            QMetaObject::invokeMethod(list->property("motion").value<QObject *>(), "prepare");
            auto *row = qobject_cast<QQuickItem *>(
                list->property("row").value<QQmlComponent *>()->create(qmlContext(list.get())));
            row->setParent(list.get());
            row->setParentItem(list.get());
            return row;
        };
        const auto firstPainted = [&](const QQuickItem *row) {
            std::optional<qreal> opacity;
            const auto frames = connect(&window, &QQuickWindow::afterRendering, this,
                                        [&] { opacity = opacity.value_or(row->opacity()); });
            const bool painted = until([&] { return opacity.has_value(); });
            disconnect(frames);
            return painted ? *opacity : -1;
        };
        QCOMPARE(firstPainted(add()), 1.0);
        QCOMPARE(firstPainted(add()), 0.0);
        list->property("motion").value<QObject *>()->setProperty(
            "container", QVariant::fromValue<QQuickItem *>(nullptr));
        QCOMPARE(firstPainted(add()), 1.0);
    }

    void aRefreshInTheMiddleOfAMotionLosesNoRow()
    {
        ViewFixture view;
        view.setStatus({RepoJson{.name = u"C"_s}});
        view.show();
        view.moveAsUsers();
        QJsonArray repos;
        for (const QString &name : {u"A"_s, u"B"_s, u"C"_s}) {
            repos.append(RepoJson{.name = name});
            view.setStatus(repos);
            view.daemon->refreshAll();
            view.settle();
        }
        view.setStatus({RepoJson{.name = u"B"_s}});
        view.daemon->refreshAll();
        QQuickItem *list = view.view->rootObject()->findChild<QQuickItem *>(u"projectList"_s);
        QVERIFY(until([&] {
            const QList<QQuickItem *> shown = shownIn(list);
            return std::ranges::all_of(shown,
                                       [](QQuickItem *item) { return item->opacity() == 1; });
        }));
        QVERIFY(!view.has(QAccessible::Button, u"A"_s));
        const QQuickItem *card = typed(list, "RepoCardView");
        QCOMPARE(card->y(), 0.0);
        QCOMPARE(placeOf(card).top(), placeOf(text(view, u"TRACKED PROJECTS"_s)).bottom() + 6);
    }
};

QTEST_MAIN(TestProjectLooks)
#include "tst_project_looks.moc"
