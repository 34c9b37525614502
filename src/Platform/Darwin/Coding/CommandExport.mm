#import "Platform/Darwin/Coding/CommandExport.h"

#import <objc/runtime.h>

#include <cstring>

#include "Base/FatalError.h"
#import "Platform/Darwin/Coding/Carrier.h"
#import "Platform/Darwin/Coding/CarrierClasses.h"
#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/RuntimeCommand.h"

/// The model of the methods; they run on carriers.
@interface PlatformDarwinCommandMethods : NSObject <_TtP13InstallCommon7Command_>
- (void)setWeight:(int)weight;
@end

static Platform::RuntimeCommand& commandIn(id carrier) {
    const auto* const command = dynamic_cast<const Platform::RuntimeCommand*>([carrier carriedObject]);
    if (command == nullptr) {
        Base::fatalError("A carrier of commands carries something else.");
    }
    // What is lent for encoding is the records in a command: commands belong to their carriers.
    return const_cast<Platform::RuntimeCommand&>(*command);
}

@implementation PlatformDarwinCommandMethods

- (NSString*)commandDescription {
    return Platform::Darwin::foundationString(commandIn(self).commandDescription());
}

- (int)weight {
    return commandIn(self).weight();
}

- (void)setWeight:(int)weight {
    commandIn(self).setWeight(weight);
}

- (void)execute {
    commandIn(self).execute();
}

@end

namespace Platform::Darwin {

void exportCommands(Class carrier, const char* runtimeName) {
    if (std::strcmp(runtimeName, "_TtC13InstallCommon15CommandConcrete") != 0) {
        return;
    }
    addMethods(carrier, [PlatformDarwinCommandMethods class]);
    class_addProtocol(carrier, @protocol(_TtP13InstallCommon7Command_));
}

}  // namespace Platform::Darwin
