#include "Scene.h"

using namespace ostra;
using namespace Qt::StringLiterals;

namespace {

const Scene kSong(u"song-page"_s, [](ViewFixture &view) {
    view.setStatus({RepoJson{.name = u"Night Drive"_s,
                             .songs = {SongJson{.filename = u"Toll Road.als"_s,
                                                .changed = true,
                                                .lastVersion = u"mix-v2"_s,
                                                .variations = {u"main"_s, u"chorus-alt"_s},
                                                .savedAgo = 7200}}}});
    view.show();
    view.press(u"Night Drive"_s);
    view.press(u"Toll Road"_s);
});

} // namespace
