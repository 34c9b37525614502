#pragma once

#import <Foundation/Foundation.h>

/// The protocols of the helpers as NSXPCInterface needs them: it reads the types of arguments and blocks that
/// only the compiler writes into a protocol, so none can be made from an XPCInterface at run time. The C++
/// interface of the same name is said beside each; a message that is not in both ends the process. The types
/// travel too, and the two ends may run for different processors: so there is no BOOL here, which is a char
/// on Intel and a bool on Apple silicon.

/// What the client of a command list offers to the helper (InstallCommon::CommandExecutingDelegate).
@protocol CommandExecutingDelegate
- (void)commandExecutingDidExecuteCommand:(NSString*)description withWeight:(int)weight;
@end

/// What the installer helper offers (InstallCommon::CommandExecuting). One-way.
@protocol CommandExecuting
- (void)executeWithCommands:(NSArray*)commands delegate:(id<CommandExecutingDelegate>)delegate;
@end

/// What the support helper offers (InstallCommon::SupportPrivilegedHelperClient calls it).
@protocol NVKSupportPrivilegedHelper
- (void)installSwiftSupportPackage:(NSURL*)package completion:(void (^)(NSError* error))completion;
@end

/// What drives an installation or uninstallation (InstallCommon::InstallationService). It stays in its
/// process: no connection exports it.
@protocol InstallationService
@property(nonatomic, copy) void (^progressNotificationBlock)
    (NSString* description, int totalWeight, int executedWeight);
- (void)install:(NSURL*)sourceDirectory
    applicationsSubdir:(NSString*)applicationsSubdir
     launchdJobsSubdir:(NSString*)launchdJobsSubdir
    supportFilesSubdir:(NSString*)supportFilesSubdir;
- (void)uninstall;
@end
