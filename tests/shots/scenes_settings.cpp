#include "Scene.h"

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

const Scene kEmpty(u"settings-empty"_s, [](ViewFixture &view) {
    view.show();
    view.press(u"Settings"_s);
});

const Scene kFull(u"settings-full"_s, [](ViewFixture &view) {
    view.service.answer(
        u"watch_path_list"_s,
        Answer::line(R"({"type":"watch_paths","paths":["/home/ada/Music/Ableton","/home/ada",)"
                     R"("/media/studio-drive/Archive/2019 to 2023/Sessions/Ableton Projects/Old",)"
                     R"("/srv/mus\u00edca"]})"));
    view.service.answer(u"launchd_status"_s,
                        Answer::line(R"({"type":"launchd_info","installed":true})"));
    view.show();
    view.press(u"Settings"_s);
});

} // namespace
