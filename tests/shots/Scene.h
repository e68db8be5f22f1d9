#pragma once

#include "views/ViewFixture.h"

#include <functional>
#include <map>

namespace ostra {

/// A picture of a view in a telling state. Each view has its scenes in a file of its own:
///     const Scene kEmpty(QStringLiteral("list-empty"), [](ViewFixture &view) { view.show(); });
/// The program settles what the scene has built and takes the picture.
class Scene {
public:
    using Build = std::function<void(ViewFixture &)>;

    Scene(const QString &name, Build build) { all().insert_or_assign(name, std::move(build)); }

    static std::map<QString, Build> &all();
};

} // namespace ostra
