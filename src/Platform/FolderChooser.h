#pragma once

#include <QCoroTask>
#include <QString>
#include <QtGlobal>

#include <tl/expected.hpp>

namespace ostra {

/// The platform's own dialog for choosing one folder. Main thread only.
class FolderChooser {
public:
    enum class Failure {
        cancelled,   ///< the user chose nothing
        unavailable, ///< this desktop has no such dialog; the client asks in its own way
    };

    virtual ~FolderChooser() = default;

    /// Shows the dialog over `parentWindow` (a native window id, 0 for none) and answers the chosen
    /// folder's absolute path.
    virtual QCoro::Task<tl::expected<QString, Failure>> choose(quintptr parentWindow) = 0;
};

} // namespace ostra
