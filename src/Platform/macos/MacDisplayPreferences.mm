#include "Platform/DisplayPreferences.h"

#import <AppKit/AppKit.h>

namespace ostra {

namespace {

class MacDisplayPreferences final : public DisplayPreferences {
public:
    explicit MacDisplayPreferences(QObject *parent) : DisplayPreferences(parent)
    {
        read();
        m_observer = [[[NSWorkspace sharedWorkspace] notificationCenter]
            addObserverForName:NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification
                        object:nil
                         queue:[NSOperationQueue mainQueue]
                    usingBlock:^(NSNotification *) {
                      read();
                    }];
    }

    ~MacDisplayPreferences() override
    {
        [[[NSWorkspace sharedWorkspace] notificationCenter] removeObserver:m_observer];
    }

private:
    void read()
    {
        NSWorkspace *workspace = [NSWorkspace sharedWorkspace];
        set([workspace accessibilityDisplayShouldReduceMotion],
            [workspace accessibilityDisplayShouldIncreaseContrast]);
    }

    id m_observer;
};

} // namespace

DisplayPreferences *DisplayPreferences::ofSystem(QObject *parent)
{
    return new MacDisplayPreferences(parent);
}

} // namespace ostra
