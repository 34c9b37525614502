#pragma once

#include_next <Foundation/Foundation.h>

/// What GNUstep's class leaves out.
@interface NSXPCConnection (DeclaredByApple)
+ (NSXPCConnection*)currentConnection;
- (void)setExportedInterface:(NSXPCInterface*)exportedInterface;
- (id)exportedObject;
- (void)setExportedObject:(id)exportedObject;
@end
