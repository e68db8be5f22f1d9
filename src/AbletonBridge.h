#pragma once

#include <QCoroTask>
#include <QString>
#include <QUrl>

#include <optional>
#include <stop_token>
#include <tl/expected.hpp>
#include <variant>

namespace ostra {

class HostApplications;
class Scheduler;

/// Quits and reopens Ableton Live through the platform's running applications, so that a set that
/// was rewritten on disk is not overwritten by the one that Live still holds. No state of its own.
/// Main thread only.
namespace AbletonBridge {

inline constexpr auto kBundleId = "com.ableton.live";

enum class RelaunchError { quitTimedOut };
/// A relaunch fails because Live did not quit, or with the platform's description.
using Error = std::variant<RelaunchError, QString>;
QString description(const Error &error);

bool isRunning(const HostApplications &host);

/// Quits Live (30 seconds at most) and starts it again without a document. Once `stop` is asked
/// for nothing is opened any more, and the host and the scheduler may go.
QCoro::Task<tl::expected<void, Error>> relaunchApp(HostApplications &host, Scheduler &scheduler,
                                                   std::stop_token stop = {});

/// The same, and opens `document`.
QCoro::Task<tl::expected<void, Error>> relaunch(HostApplications &host, Scheduler &scheduler,
                                                QUrl document, std::stop_token stop = {});

/// The most recently modified ".als" file directly in `folder`; of two with the same time the
/// first by name.
std::optional<QUrl> mostRecentALS(const QString &folder);

} // namespace AbletonBridge
} // namespace ostra
