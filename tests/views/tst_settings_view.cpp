#include "Platform/FolderChooser.h"
#include "ViewFixture.h"
#include "Views/MenuBarViewModel.h"
#include "Views/WatchFolderPickerModel.h"

#include <QDir>
#include <QTest>

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

Answer watchPaths(const QByteArray &paths)
{
    return Answer::line(R"({"type":"watch_paths","paths":[)" + paths + "]}");
}

class FakeFolderChooser final : public FolderChooser {
public:
    using Choice = tl::expected<QString, Failure>;
    explicit FakeFolderChooser(Choice choice) : m_choice(std::move(choice)) {}
    QCoro::Task<Choice> choose(quintptr) override
    {
        ++asked;
        co_return m_choice;
    }
    int asked = 0;

private:
    Choice m_choice;
};

} // namespace

class TestSettingsView : public QObject {
    Q_OBJECT

private:
    static void open(ViewFixture &view)
    {
        view.show();
        view.forget();
        view.press(u"Settings"_s);
    }

private slots:
    void initTestCase() { qputenv("HOME", "/home/ada"); }
    void cleanup() { qputenv("HOME", "/home/ada"); }

    void openingTheSettingsAsksForFoldersThenForTheAgent()
    {
        ViewFixture view;
        open(view);
        QCOMPARE(view.sent(),
                 (QByteArrayList{R"({"cmd":"watch_path_list"})", R"({"cmd":"launchd_status"})"}));
    }

    void anEmptyListShowsOneLineAndTheButton()
    {
        ViewFixture view;
        open(view);
        QVERIFY(view.labels().contains(u"No watch paths configured"_s));
        QVERIFY(view.has(QAccessible::Button, u"Add Folder"_s));
        QVERIFY(!view.has(QAccessible::Button, u"Remove folder"_s));
        QStringList headings;
        for (QAccessibleInterface *heading : view.all(QAccessible::Heading)) {
            headings << heading->text(QAccessible::Name);
        }
        QCOMPARE(headings, (QStringList{u"WATCH PATHS"_s, u"PROJECT DISCOVERY"_s, u"DAEMON"_s}));
    }

    void foldersAreShownInOrderWithTheHomeFolderShort()
    {
        ViewFixture view;
        view.service.answer(u"watch_path_list"_s,
                            watchPaths(R"("/home/ada/Music","/media/disk/Sets","/home/adam")"));
        open(view);
        QStringList paths = view.labels().filter(u"/"_s);
        QCOMPARE(paths, (QStringList{u"~/Music"_s, u"/media/disk/Sets"_s, u"/home/adam"_s}));
        QVERIFY(!view.labels().contains(u"No watch paths configured"_s));
    }

    void removingAFolderSendsItsWholePathAndReloads()
    {
        ViewFixture view;
        view.service.answer(u"watch_path_list"_s, watchPaths(R"("/home/ada/Music")"));
        view.service.answer(u"watch_path_remove"_s, [&view](const QJsonObject &) {
            view.service.answer(u"watch_path_list"_s, watchPaths(""));
            return Answer::ok();
        });
        open(view);
        view.forget();
        view.press(u"Remove folder"_s);
        QCOMPARE(view.sent(),
                 (QByteArrayList{R"({"cmd":"watch_path_remove","path":"/home/ada/Music"})",
                                 R"({"cmd":"watch_path_list"})"}));
        QVERIFY(view.labels().contains(u"No watch paths configured"_s));
    }

    void aFailedRemovalIsShown()
    {
        ViewFixture view;
        view.service.answer(u"watch_path_list"_s, watchPaths(R"("/a")"));
        view.service.answer(u"watch_path_remove"_s, Answer::error(u"busy"_s));
        open(view);
        view.press(u"Remove folder"_s);
        QVERIFY(view.labels().contains(u"Remove watch path error: busy"_s));
        QVERIFY(view.labels().contains(u"/a"_s));
    }

    void theButtonSaysScanningUntilTheRefreshIsThere()
    {
        ViewFixture view;
        open(view);
        view.service.answer(u"rescan"_s, heldAnswer(Answer::ok()));
        view.forget();
        QAccessibleInterface *button = view.find(QAccessible::Button, u"Rescan Now"_s);
        button->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
        QVERIFY(view.service.waitForRequests(1, u"rescan"_s));
        QVERIFY(view.has(QAccessible::Button, u"Scanning..."_s));
        view.service.release();
        QVERIFY(until([&] { return !view.daemon->isScanning(); }));
        QCOMPARE(view.sent(), (QByteArrayList{R"({"cmd":"rescan"})", R"({"cmd":"status"})"}));
        QVERIFY(view.has(QAccessible::Button, u"Rescan Now"_s));
    }

    void theSwitchShowsWhatTheServiceReports()
    {
        ViewFixture view;
        view.service.answer(u"launchd_install"_s, Answer::ok());
        open(view);
        const auto box = [&view] {
            return view.find(QAccessible::CheckBox, u"Start at login"_s);
        };
        QCOMPARE(box()->text(QAccessible::Description), u"Auto-start the daemon when you log in"_s);
        QVERIFY(!box()->state().checked);
        view.forget();
        view.press(QAccessible::CheckBox, u"Start at login"_s);
        QCOMPARE(view.sent(),
                 (QByteArrayList{R"({"cmd":"launchd_install"})", R"({"cmd":"launchd_status"})"}));
        QVERIFY(!box()->state().checked); // the service still says no
        view.service.answer(u"launchd_status"_s,
                            Answer::line(R"({"type":"launchd_info","installed":true})"));
        view.press(QAccessible::CheckBox, u"Start at login"_s);
        QVERIFY(box()->state().checked);
    }

    void aChosenFolderIsAdded()
    {
        ViewFixture view;
        view.service.answer(u"watch_path_add"_s, Answer::ok());
        FakeFolderChooser chooser(u"/media/disk/Sets"_s);
        view.show();
        view.model<MenuBarViewModel>()->setFolderChooser(&chooser);
        view.press(u"Settings"_s);
        view.forget();
        view.press(u"Add Folder"_s);
        QCOMPARE(chooser.asked, 1);
        QCOMPARE(view.sent(),
                 (QByteArrayList{R"({"cmd":"watch_path_add","path":"/media/disk/Sets"})",
                                 R"({"cmd":"watch_path_list"})", R"({"cmd":"status"})"}));
        QVERIFY(!view.model<MenuBarViewModel>()->showingFolderPicker());
    }

    void theEmptyStateAddsAFolderToo()
    {
        ViewFixture view;
        view.service.answer(u"watch_path_add"_s, Answer::ok());
        FakeFolderChooser chooser(u"/media/disk/Sets"_s);
        view.show();
        view.model<MenuBarViewModel>()->setFolderChooser(&chooser);
        view.press(u"choose folder"_s);
        QCOMPARE(view.sent(u"watch_path_add"_s),
                 QByteArrayList{R"({"cmd":"watch_path_add","path":"/media/disk/Sets"})"});
    }

    void aCancelledChoiceSendsNothing()
    {
        ViewFixture view;
        FakeFolderChooser chooser(tl::unexpected(FolderChooser::Failure::cancelled));
        view.show();
        view.model<MenuBarViewModel>()->setFolderChooser(&chooser);
        view.forget();
        view.press(u"choose folder"_s);
        QCOMPARE(view.sent(), QByteArrayList());
        QVERIFY(!view.has(QAccessible::EditableText));
        QVERIFY(!view.model<MenuBarViewModel>()->showingFolderPicker());
    }

    void whereThereIsNoDialogAFolderIsTyped()
    {
        ViewFixture view;
        qputenv("HOME", view.folder().toUtf8());
        QVERIFY(QDir(view.folder()).mkpath(u"Music/Ableton"_s));
        QVERIFY(QDir(view.folder()).mkpath(u"Movies"_s));
        view.service.answer(u"watch_path_add"_s, Answer::ok());
        FakeFolderChooser chooser(tl::unexpected(FolderChooser::Failure::unavailable));
        view.show();
        view.model<MenuBarViewModel>()->setFolderChooser(&chooser);
        view.press(u"Settings"_s);
        view.press(u"Add Folder"_s);
        QCOMPARE(view.focusName(), u"Folder"_s);
        view.type(u"Mu"_s);
        QVERIFY(until([&] {
            return view.has(QAccessible::Button, u"~/Music"_s) &&
                   !view.has(QAccessible::Button, u"~/Movies"_s);
        }));
        view.press(u"~/Music"_s);
        QVERIFY(until([&] { return view.has(QAccessible::Button, u"~/Music/Ableton"_s); }));
        view.press(u"~/Music/Ableton"_s);
        view.forget();
        view.press(u"Add"_s);
        QVERIFY(until([&] { return view.sent(u"status"_s).size() == 1; }));
        QCOMPARE(view.sent(u"watch_path_add"_s),
                 QByteArrayList{R"({"cmd":"watch_path_add","path":")" + view.folder().toUtf8() +
                                R"(/Music/Ableton"})"});
        QVERIFY(!view.has(QAccessible::EditableText));
    }

    void whatIsNoFolderIsToldAndNotSent()
    {
        ViewFixture view;
        view.show();
        view.press(u"choose folder"_s);
        view.key(Qt::Key_A, Qt::ControlModifier);
        view.type(u"/no/such/folder"_s);
        view.forget();
        view.key(Qt::Key_Return);
        QVERIFY(until([&] { return view.labels().contains(u"No such folder"_s); }));
        QCOMPARE(view.sent(), QByteArrayList());
        view.key(Qt::Key_Escape);
        QVERIFY(!view.has(QAccessible::EditableText));
    }
};

QTEST_MAIN(TestSettingsView)
#include "tst_settings_view.moc"
