#pragma once

#include <QCoroTask>
#include <QString>
#include <QUrl>

#include <memory>
#include <tl/expected.hpp>
#include <vector>

namespace ostra {

/// The applications that run beside the client, and opening documents in them. Main thread only.
class HostApplications {
public:
    class Application {
    public:
        virtual ~Application() = default;
        /// A normal quit: the application may ask its user about unsaved work first. Returns at
        /// once; isTerminated() tells when it has happened.
        virtual void terminate() = 0;
        virtual bool isTerminated() const = 0;
    };

    virtual ~HostApplications() = default;

    virtual std::vector<std::shared_ptr<Application>> running(const QString &bundleId) const = 0;

    /// Where the application is installed; an empty URL when it is not found.
    virtual QUrl applicationUrl(const QString &bundleId) const = 0;

    /// Opens a document in its default application, or starts an application. The error is the
    /// platform's description.
    virtual QCoro::Task<tl::expected<void, QString>> open(QUrl url) = 0;
};

} // namespace ostra
