#import "Platform/Darwin/XPC/ProtocolBridge.h"

#include <Block.h>
#import <objc/runtime.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <utility>

#include "Base/FatalError.h"
#import "Platform/Darwin/Coding/Carrier.h"
#import "Platform/Darwin/Coding/CodedValues.h"
#import "Platform/Darwin/ErrorText.h"
#include "Platform/Darwin/FoundationBridge.h"
#import "Platform/Darwin/XPC/Exporter.h"

namespace Platform::Darwin {

namespace {

using Send = void (*)(id target, const XPCMethod& method, std::vector<XPCValue> arguments, XPCReply reply);

// Errors of a helper have no domain of their own.
constexpr const char* kErrorDomain = "com.norvik.InstallerHelper.error";

NSError* systemError(const Error& error) {
    NSDictionary* const details = @{NSLocalizedDescriptionKey : foundationString(error.description)};
    return [NSError errorWithDomain:foundationString(kErrorDomain) code:error.code userInfo:details];
}

void sendToExecutor(id target, const XPCMethod& method, std::vector<XPCValue> arguments, XPCReply /*reply*/) {
    NSArray* const commands = carrierList(std::move(std::get<Base::CodedObjectList>(arguments.at(0))));
    const id delegate = exporterOf(std::move(std::get<std::shared_ptr<XPCObject>>(arguments.at(1))),
                                   method.arguments.at(1).proxy, {});
    [static_cast<id<CommandExecuting>>(target) executeWithCommands:commands delegate:delegate];
}

void sendToDelegate(id target, const XPCMethod& /*method*/, std::vector<XPCValue> arguments,
                    XPCReply /*reply*/) {
    NSString* const description = foundationString(std::get<std::string>(arguments.at(0)));
    const int weight = std::get<std::int32_t>(arguments.at(1));
    [static_cast<id<CommandExecutingDelegate>>(target) commandExecutingDidExecuteCommand:description
                                                                              withWeight:weight];
}

void sendToSupportHelper(id target, const XPCMethod& /*method*/, std::vector<XPCValue> arguments,
                         XPCReply reply) {
    NSURL* const package = codedURL(std::get<Base::URL>(arguments.at(0)));
    [static_cast<id<NVKSupportPrivilegedHelper>>(target)
        installSwiftSupportPackage:package
                        completion:^(NSError* error) {
                          reply(error != nil ? std::optional(errorOf(error)) : std::nullopt);
                        }];
}

/// The protocol that an exporter's class adopts, with its one method.
struct ProtocolBridge {
    Class exporter;
    SEL selector;
    Send send;

    [[nodiscard]] Protocol* protocol() const {
        unsigned count = 0;
        const std::unique_ptr<Protocol*[], void (*)(void*)> adopted(class_copyProtocolList(exporter, &count),
                                                                    &std::free);
        if (count != 1) {
            Base::fatalError("an exporter adopts one protocol");
        }
        return adopted[0];
    }
};

const ProtocolBridge& bridgeOf(std::string_view protocolName) {
    static const std::array<ProtocolBridge, 3> kBridges{{
        {[PlatformDarwinCommandExecutingExporter class],
         @selector(executeWithCommands:delegate:),
         &sendToExecutor},
        {[PlatformDarwinDelegateExporter class],
         @selector(commandExecutingDidExecuteCommand:withWeight:),
         &sendToDelegate},
        {[PlatformDarwinSupportHelperExporter class],
         @selector(installSwiftSupportPackage:completion:),
         &sendToSupportHelper},
    }};
    const auto* const found =
        std::find_if(kBridges.begin(), kBridges.end(), [protocolName](const ProtocolBridge& each) {
            return protocolName == protocol_getName(each.protocol());
        });
    if (found == kBridges.end()) {
        Base::fatalError("no connection knows the protocol " + std::string(protocolName));
    }
    return *found;
}

NSSet* classesOf(const Base::AllowedClasses& allowed) {
    NSMutableSet* const classes = [NSMutableSet set];
    for (const Base::CodedClass* coded : allowed.objects) {
        [classes addObject:static_cast<id>(carrierClass(*coded))];
    }
    for (const std::string_view name : allowed.values) {
        const Class value = NSClassFromString(foundationString(name));
        if (value == Nil) {
            Base::fatalError("an interface allows a class that does not exist: " + std::string(name));
        }
        [classes addObject:static_cast<id>(value)];
    }
    return classes;
}

}  // namespace

NSXPCInterface* systemInterface(const XPCInterface& interface) {
    NSXPCInterface* const result =
        [NSXPCInterface interfaceWithProtocol:bridgeOf(interface.protocolName).protocol()];
    for (const XPCMethod& method : interface.methods) {
        const SEL selector = sel_registerName(std::string(method.selector).c_str());
        for (NSUInteger index = 0; index < method.arguments.size(); ++index) {
            const XPCArgument& argument = method.arguments[index];
            if (argument.kind == XPCArgumentKind::codedObjects) {
                [result setClasses:classesOf(argument.allowed)
                       forSelector:selector
                     argumentIndex:index
                           ofReply:NO];
            } else if (argument.kind == XPCArgumentKind::object) {
                [result setInterface:systemInterface(*argument.proxy)
                         forSelector:selector
                       argumentIndex:index
                             ofReply:NO];
            }
        }
    }
    return result;
}

id exporterOf(std::shared_ptr<XPCObject> object, std::shared_ptr<const XPCInterface> interface,
              std::function<void(const std::string&)> refused) {
    const Class exporter = bridgeOf(interface->protocolName).exporter;
    auto exported = std::make_unique<Exported>();
    exported->object = std::move(object);
    exported->interface = std::move(interface);
    exported->refused = std::move(refused);
    return [[[exporter alloc] initWithExported:std::move(exported)] autorelease];
}

void sendMessage(id target, std::string_view protocolName, const XPCMethod& method,
                 std::vector<XPCValue> arguments, XPCReply reply) {
    const ProtocolBridge& bridge = bridgeOf(protocolName);
    if (method.selector != sel_getName(bridge.selector) || arguments.size() != method.arguments.size()) {
        Base::fatalError("a message that the protocol " + std::string(protocolName) +
                         " does not have: " + std::string(method.selector));
    }
    bridge.send(target, method, std::move(arguments), std::move(reply));
}

const XPCMethod& methodOrDie(const XPCInterface& interface, std::string_view selector) {
    const auto found =
        std::find_if(interface.methods.begin(), interface.methods.end(),
                     [selector](const XPCMethod& method) { return method.selector == selector; });
    if (found == interface.methods.end()) {
        Base::fatalError("unrecognized selector on an XPC interface: " + std::string(selector));
    }
    return *found;
}

XPCReply replyOf(void (^completion)(NSError* error)) {
    // Released with the last copy of the function object that holds it.
    const std::shared_ptr<void> block(reinterpret_cast<void*>(Block_copy(completion)), [](void* copied) {
        const Pool pool;
        Block_release(copied);
    });
    return [block](const std::optional<Error>& error) {
        const Pool pool;
        const auto call = reinterpret_cast<void (^)(NSError*)>(block.get());
        call(error ? systemError(*error) : nil);
    };
}

Error errorOf(NSError* error) {
    return {text(PlatformDarwinErrorText(error)), static_cast<int>([error code])};
}

}  // namespace Platform::Darwin
