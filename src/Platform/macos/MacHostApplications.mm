#include "Platform/SystemHostApplications.h"

#include <QCoroFuture>
#include <QPromise>

#import <AppKit/AppKit.h>

#include <memory>

namespace ostra {

namespace {

using Outcome = tl::expected<void, QString>;

NSString *nativeText(const QString &text)
{
    return [NSString stringWithUTF8String:text.toUtf8().constData()];
}

class MacApplication final : public HostApplications::Application {
public:
    explicit MacApplication(NSRunningApplication *application) : m_application(application) {}

    void terminate() override { [m_application terminate]; }
    bool isTerminated() const override { return [m_application isTerminated]; }

private:
    NSRunningApplication *m_application;
};

class MacHostApplications final : public HostApplications {
public:
    std::vector<std::shared_ptr<Application>> running(const QString &bundleId) const override
    {
        std::vector<std::shared_ptr<Application>> applications;
        for (NSRunningApplication *application in
             [NSRunningApplication runningApplicationsWithBundleIdentifier:nativeText(bundleId)]) {
            applications.push_back(std::make_shared<MacApplication>(application));
        }
        return applications;
    }

    QUrl applicationUrl(const QString &bundleId) const override
    {
        NSURL *url = [[NSWorkspace sharedWorkspace]
            URLForApplicationWithBundleIdentifier:nativeText(bundleId)];
        return url ? QUrl::fromLocalFile(QString::fromUtf8([[url path] UTF8String])) : QUrl();
    }

    QCoro::Task<Outcome> open(QUrl url) override
    {
        // The answer comes on a queue of the system; the future brings it back to this thread.
        const auto promise = std::make_shared<QPromise<Outcome>>();
        promise->start();
        const auto handler = ^(NSRunningApplication *, NSError *error) {
          if (error) {
              promise->addResult(Outcome(
                  tl::unexpected(QString::fromUtf8([[error localizedDescription] UTF8String]))));
          } else {
              promise->addResult(Outcome());
          }
          promise->finish();
        };
        NSURL *target = [NSURL fileURLWithPath:nativeText(url.toLocalFile())];
        NSWorkspaceOpenConfiguration *configuration = [NSWorkspaceOpenConfiguration configuration];
        if ([[target pathExtension] isEqualToString:@"app"]) {
            [[NSWorkspace sharedWorkspace] openApplicationAtURL:target
                                                  configuration:configuration
                                              completionHandler:handler];
        } else {
            [[NSWorkspace sharedWorkspace] openURL:target
                                     configuration:configuration
                                 completionHandler:handler];
        }
        co_return co_await promise->future();
    }
};

} // namespace

std::unique_ptr<HostApplications> makeSystemHostApplications(Scheduler &)
{
    return std::make_unique<MacHostApplications>();
}

} // namespace ostra
