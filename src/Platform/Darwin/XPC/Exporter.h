#pragma once

#import <Foundation/Foundation.h>

#include <functional>
#include <memory>
#include <string>

#import "Platform/Darwin/XPC/Protocols.h"
#include "Platform/XPC.h"

namespace Platform::Darwin {

/// A C++ object as a connection exports it: what it understands, and whom a refused message is told.
struct Exported {
    std::shared_ptr<XPCObject> object;
    std::shared_ptr<const XPCInterface> interface;
    /// May be empty.
    std::function<void(const std::string& why)> refused;
    /// A connection ends with its first refused message; what comes of it after that is dropped untold.
    bool hasRefused = false;
};

}  // namespace Platform::Darwin

/// The object that NSXPCConnection delivers an exported object's messages to: there is a subclass for each
/// protocol, which turns the arguments into the program's values. A message whose arguments do not fit the
/// interface is not delivered, and its connection becomes invalid. Called on the connection's queue, one
/// message at a time.
@interface PlatformDarwinExporter : NSObject {
  @private
    std::unique_ptr<Platform::Darwin::Exported> exported_;
}

/// Takes `exported` over; its interface has the protocol of the class.
- (id)initWithExported:(std::unique_ptr<Platform::Darwin::Exported>)exported;

/// Ends the connection that a message came over. Carriers call this too, for what cannot be decoded.
- (void)refuseMessage:(NSString*)why onConnection:(NSXPCConnection*)connection;

@end

@interface PlatformDarwinCommandExecutingExporter : PlatformDarwinExporter <CommandExecuting>
@end

@interface PlatformDarwinDelegateExporter : PlatformDarwinExporter <CommandExecutingDelegate>
@end

@interface PlatformDarwinSupportHelperExporter : PlatformDarwinExporter <NVKSupportPrivilegedHelper>
@end
