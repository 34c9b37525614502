#import "Platform/Darwin/XPC/Exporter.h"

#include <optional>
#include <utility>
#include <vector>

#import "Platform/Darwin/Coding/Carrier.h"
#import "Platform/Darwin/Coding/CodedValues.h"
#include "Platform/Darwin/FoundationBridge.h"
#import "Platform/Darwin/XPC/ProtocolBridge.h"
#include "Platform/Darwin/XPC/RemoteObject.h"

using Platform::Darwin::Exported;
using Platform::XPCMethod;
using Platform::XPCValue;

@interface PlatformDarwinExporter ()
- (const XPCMethod*)methodOf:(SEL)selector;
- (void)refuse:(NSString*)why;
- (void)deliver:(const XPCMethod*)method
      arguments:(std::vector<XPCValue>)arguments
          reply:(Platform::XPCReply)reply;
@end

@implementation PlatformDarwinExporter

- (id)initWithExported:(std::unique_ptr<Exported>)exported {
    self = [super init];
    if (self != nil) {
        exported_ = std::move(exported);
    }
    return self;
}

- (const XPCMethod*)methodOf:(SEL)selector {
    return &Platform::Darwin::methodOrDie(*exported_->interface, sel_getName(selector));
}

- (void)refuseMessage:(NSString*)why onConnection:(NSXPCConnection*)connection {
    [connection invalidate];
    if (exported_->hasRefused) {
        return;
    }
    exported_->hasRefused = true;
    if (exported_->refused) {
        exported_->refused(Platform::Darwin::text(why));
    }
}

- (void)refuse:(NSString*)why {
    [self refuseMessage:why onConnection:[NSXPCConnection currentConnection]];
}

- (void)deliver:(const XPCMethod*)method
      arguments:(std::vector<XPCValue>)arguments
          reply:(Platform::XPCReply)reply {
    if (!exported_->hasRefused) {
        exported_->object->message(method->selector, std::move(arguments), std::move(reply));
    }
}

@end

@implementation PlatformDarwinCommandExecutingExporter

- (void)executeWithCommands:(NSArray*)commands delegate:(id<CommandExecutingDelegate>)delegate {
    const XPCMethod* method = [self methodOf:_cmd];
    std::string refusal;
    std::optional<Base::CodedObjectList> objects =
        Platform::Darwin::codedObjects(commands, method->arguments.at(0).allowed, refusal);
    if (!objects) {
        [self refuse:Platform::Darwin::foundationString(std::string(method->selector) +
                                                        ", argument 0: " + refusal)];
        return;
    }
    if (delegate == nil) {
        [self refuse:Platform::Darwin::foundationString(std::string(method->selector) +
                                                        ", argument 1: no object")];
        return;
    }
    std::vector<XPCValue> arguments;
    arguments.emplace_back(std::move(*objects));
    arguments.emplace_back(std::shared_ptr<Platform::XPCObject>(
        std::make_shared<Platform::Darwin::RemoteObject>(delegate, method->arguments.at(1).proxy)));
    [self deliver:method arguments:std::move(arguments) reply:{}];
}

@end

@implementation PlatformDarwinDelegateExporter

- (void)commandExecutingDidExecuteCommand:(NSString*)description withWeight:(int)weight {
    const XPCMethod* method = [self methodOf:_cmd];
    std::optional<std::string> text = Platform::Darwin::stringValue(description);
    if (!text) {
        [self refuse:Platform::Darwin::foundationString(std::string(method->selector) +
                                                        ", argument 0: no text")];
        return;
    }
    std::vector<XPCValue> arguments;
    arguments.emplace_back(std::move(*text));
    arguments.emplace_back(std::int32_t{weight});
    [self deliver:method arguments:std::move(arguments) reply:{}];
}

@end

@implementation PlatformDarwinSupportHelperExporter

- (void)installSwiftSupportPackage:(NSURL*)package completion:(void (^)(NSError* error))completion {
    const XPCMethod* method = [self methodOf:_cmd];
    std::optional<Base::URL> url = Platform::Darwin::urlValue(package);
    if (!url || completion == nil) {
        [self refuse:Platform::Darwin::foundationString(
                         std::string(method->selector) +
                         ", argument 0: a URL that names no file, or no completion")];
        return;
    }
    std::vector<XPCValue> arguments;
    arguments.emplace_back(std::move(*url));
    [self deliver:method arguments:std::move(arguments) reply:Platform::Darwin::replyOf(completion)];
}

@end
