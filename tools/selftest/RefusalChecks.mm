// Lists that somebody else's client might send. None may reach the helper's own code.

#include "Check.h"
#include "InstallCommon/Commands/Uninstallation/KillProcessCommand.h"
#import "ListService.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#import "Platform/Darwin/Coding/Carrier.h"
#import "Platform/Darwin/XPC/Protocols.h"

/// A class that no list may hold.
@interface SelftestStranger : NSObject <NSSecureCoding>
@end

@implementation SelftestStranger

+ (BOOL)supportsSecureCoding {
    return YES;
}

- (id)initWithCoder:(NSCoder*)coder {
    (void)coder;
    return [self init];
}

- (void)encodeWithCoder:(NSCoder*)coder {
    [coder encodeObject:@"stranger" forKey:@"commandDescription"];
}

@end

/// Wants no reports.
@interface SelftestDelegate : NSObject <CommandExecutingDelegate>
@end

@implementation SelftestDelegate

- (void)commandExecutingDidExecuteCommand:(NSString*)description withWeight:(int)weight {
    (void)description;
    (void)weight;
}

@end

namespace Selftest {

namespace {

using Platform::Darwin::carrierOwning;

/// A command under the name of KillProcessCommand whose process is not a text.
class MisshapenCommand final : public Base::CodedObject {
  public:
    [[nodiscard]] const Base::CodedClass& codedClass() const override {
        return InstallCommon::KillProcessCommand::staticClass();
    }
    void encode(Base::Coder& coder) const override {
        coder.encodeURL("kext", Base::URL::fileURL("/a"));
        coder.encodeString("commandDescription", "Closing...");
    }
};

/// Sends `items` as a list of commands, as a client that is not ours would, and then a list of none: messages
/// arrive in order, so when that one is executed, the first was dropped.
Outcome outcomeOfSending(NSArray* items) {
    const auto events = std::make_shared<Events>();
    const auto service = std::make_shared<ListService>(events);
    const std::unique_ptr<Loopback> loopback = makeListLoopback(events, service);
    NSXPCConnection* const client =
        loopback->makeForeignClient(InstallCommon::CreateCommandExecutingXPCInterface());
    const auto sendItems = [client](NSArray* commands) {
        SelftestDelegate* const delegate = [[[SelftestDelegate alloc] init] autorelease];
        [static_cast<id<CommandExecuting>>([client remoteObjectProxy]) executeWithCommands:commands
                                                                                  delegate:delegate];
    };
    sendItems(items);
    sendItems([NSArray array]);
    const std::string executed = "list of " + std::to_string([items count]) + " commands";
    const bool isAnswered = events->waitForAny(
        {executed, "list of 0 commands", "service: invalid", "client: invalid", "client: interrupted"});
    if (isAnswered && !events->has("list of 0 commands") && !events->has(executed)) {
        // The client can hear of the end before the service tells the reason.
        static_cast<void>(events->waitForBeginning("service: refused: "));
    }
    const std::string seen = events->asText();
    [client invalidate];
    if (!isAnswered) {
        return failed("neither refused nor dropped within 20 seconds; what happened: " + seen);
    }
    if (events->has(executed)) {
        return failed("the list reached the executor");
    }
    return passed(seen);
}

NSArray* listOf(std::unique_ptr<Base::CodedObject> object) {
    return [NSArray arrayWithObject:carrierOwning(std::move(object))];
}

Outcome checkForeignClass() {
    return outcomeOfSending([NSArray arrayWithObject:[[[SelftestStranger alloc] init] autorelease]]);
}

Outcome checkBaseClass() {
    return outcomeOfSending(listOf(std::make_unique<InstallCommon::CommandConcrete>("...")));
}

Outcome checkRecordAsCommand() {
    using NorvikCommon::FilesystemItemInfo;
    return outcomeOfSending(listOf(std::make_unique<Base::CodedRecord<FilesystemItemInfo>>(
        FilesystemItemInfo::itemWithPath(Base::URL::fileURL("/a")))));
}

Outcome checkTextAsCommand() {
    return outcomeOfSending([NSArray arrayWithObject:@"rm"]);
}

Outcome checkMisshapenCommand() {
    return outcomeOfSending(listOf(std::make_unique<MisshapenCommand>()));
}

Outcome checkMixedList() {
    InstallCommon::CommandList commands = uninstallCommands();
    NSMutableArray* const items = [NSMutableArray array];
    for (std::unique_ptr<InstallCommon::Command>& command : commands) {
        [items addObject:carrierOwning(std::move(command))];
    }
    [items addObject:[[[SelftestStranger alloc] init] autorelease]];
    return outcomeOfSending(items);
}

}  // namespace

Checks refusalChecks() {
    return {
        {"refusal.foreign-class", checkForeignClass},         {"refusal.base-class", checkBaseClass},
        {"refusal.record-as-command", checkRecordAsCommand},  {"refusal.text-as-command", checkTextAsCommand},
        {"refusal.misshapen-command", checkMisshapenCommand}, {"refusal.stranger-behind-75", checkMixedList}};
}

}  // namespace Selftest
