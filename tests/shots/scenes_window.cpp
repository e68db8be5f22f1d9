#include "Design/DesignSystem.h"
#include "Scene.h"
#include "Views/ProjectTexts.h"

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

QJsonArray oneProject()
{
    return {RepoJson{.name = u"Night Drive"_s,
                     .songs = {SongJson{.filename = u"Night Drive.als"_s,
                                        .lastVersion = u"mix-v2"_s,
                                        .savedAgo = 7200}},
                     .sizeBytes = 312'400'000}};
}

const Scene kOffline(u"window-offline"_s, [](ViewFixture &view) {
    view.setStatus(oneProject());
    view.show();
    view.loseService();
});

const Scene kBothErrors(u"window-both-errors"_s, [](ViewFixture &view) {
    view.setStatus(oneProject());
    view.show();
    view.service.answer(u"rescan"_s, Answer::error(u"could not read /home/ada/Music/Archive: the "
                                                   "drive has been removed while it was being "
                                                   "scanned; plug it in and scan again, or remove "
                                                   "the folder from the watched ones"_s));
    view.daemon->rescan();
    view.settle();
    view.loseService();
});

const Scene kRelaunch(u"window-relaunch-confirmation"_s, [](ViewFixture &view) {
    view.setStatus(oneProject());
    view.show();
    view.press(u"Relaunch Ableton Live"_s);
});

const Scene kNotice(u"window-ableton-notice"_s, [](ViewFixture &view) {
    view.setStatus(oneProject());
    view.show();
    view.host.start();
    view.daemon->noteAbletonIfRunning(u"Night Drive"_s, u"Night Drive.als"_s);
});

// The moment in which a window is connecting is too short to be caught.
const Scene kConnecting(u"footer-connecting"_s, [](ViewFixture &view) {
    constexpr auto state = DaemonState::ConnectionState::connecting;
    view.showView(u"StatusFooter.qml"_s, {{u"width"_s, 360},
                                          {u"connectionState"_s, static_cast<int>(state)},
                                          {u"detailText"_s, ProjectTexts::footerText(state, 0)},
                                          {u"versionText"_s, u"v1.0.0"_s}});
    view.view->setColor(QColor::fromRgb(DS::Color::paper));
});

const Scene kNeverConnected(u"window-offline-empty"_s, [](ViewFixture &view) {
    view.showOffline();
    view.loseService();
});

} // namespace
