#pragma once

#import <Foundation/Foundation.h>

/// A command as macOS's object runtime knows it. CommandConcrete conforms to it, and takes a weight too.
@protocol _TtP13InstallCommon7Command_
- (NSString*)commandDescription;
- (int)weight;
- (void)execute;
@end

namespace Platform::Darwin {

/// Has `carrier`, the class that is made for CommandConcrete and not registered yet, export what its objects
/// carry: the protocol and `setWeight:`. Does nothing with any other class.
void exportCommands(Class carrier, const char* runtimeName);

}  // namespace Platform::Darwin
