#include "Platform/SystemFolderChooser.h"

#include <QCoroFuture>
#include <QPromise>

#import <AppKit/AppKit.h>

#include <memory>

namespace ostra {

namespace {

using Choice = tl::expected<QString, FolderChooser::Failure>;

class MacFolderChooser final : public FolderChooser {
public:
    QCoro::Task<Choice> choose(quintptr) override
    {
        NSOpenPanel *panel = [NSOpenPanel openPanel];
        [panel setCanChooseDirectories:YES];
        [panel setCanChooseFiles:NO];
        [panel setAllowsMultipleSelection:NO];
        const auto promise = std::make_shared<QPromise<Choice>>();
        promise->start();
        [panel beginWithCompletionHandler:^(NSInteger result) {
          NSURL *url = [[panel URLs] firstObject];
          if (result == NSModalResponseOK && url) {
              promise->addResult(Choice(QString::fromUtf8([[url path] UTF8String])));
          } else {
              promise->addResult(Choice(tl::unexpected(Failure::cancelled)));
          }
          promise->finish();
        }];
        const QFuture<Choice> choice = promise->future();
        co_return co_await choice;
    }
};

} // namespace

std::unique_ptr<FolderChooser> makeSystemFolderChooser()
{
    return std::make_unique<MacFolderChooser>();
}

} // namespace ostra
