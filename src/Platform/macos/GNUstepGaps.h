#pragma once

// What AppKit has and GNUstep's does not yet, declared so that the macOS sources can be
// type-checked on Linux. Included by that check only.

#import <AppKit/AppKit.h>

@interface NSWorkspaceOpenConfiguration : NSObject
+ (instancetype)configuration;
@end

typedef void (^OstraOpenHandler)(NSRunningApplication *, NSError *);

extern NSString *const NSWorkspaceAccessibilityDisplayOptionsDidChangeNotification;

@interface NSWorkspace (OstraGaps)
- (BOOL)accessibilityDisplayShouldReduceMotion;
- (BOOL)accessibilityDisplayShouldIncreaseContrast;
- (NSURL *)URLForApplicationWithBundleIdentifier:(NSString *)identifier;
- (void)openURL:(NSURL *)url
        configuration:(NSWorkspaceOpenConfiguration *)configuration
    completionHandler:(OstraOpenHandler)handler;
- (void)openApplicationAtURL:(NSURL *)url
               configuration:(NSWorkspaceOpenConfiguration *)configuration
           completionHandler:(OstraOpenHandler)handler;
@end
