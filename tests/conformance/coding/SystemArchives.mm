#include "SystemArchives.h"

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <utility>

#import "Platform/Darwin/Coding/Carrier.h"
#import "Platform/Darwin/Coding/CarrierClasses.h"
#import "Platform/Darwin/Coding/CommandExport.h"
#import "Platform/Darwin/Coding/SystemCoder.h"
#include "Platform/Darwin/FoundationBridge.h"
#import "TestCoders.h"

/// What the base of the commands takes apart from what the protocol has.
@protocol CommandWithWeight <_TtP13InstallCommon7Command_>
- (void)setWeight:(int)weight;
@end

namespace SystemArchives {

namespace {

using Platform::Darwin::Pool;

NSSet* allowedSet(const Base::AllowedClasses& allowed) {
    NSMutableSet* const set = [NSMutableSet set];
    for (const Base::CodedClass* coded : allowed.objects) {
        [set addObject:static_cast<id>(Platform::Darwin::carrierClass(*coded))];
    }
    for (const std::string_view name : allowed.values) {
        [set addObject:static_cast<id>(NSClassFromString(Platform::Darwin::foundationString(name)))];
    }
    return set;
}

NSData* dataOf(const Bytes& bytes) {
    return [NSData dataWithBytes:bytes.data() length:bytes.size()];
}

std::optional<Base::CodedObjectList> readWith(NSKeyedUnarchiver* unarchiver,
                                              const Base::AllowedClasses& allowed, NSString* fault,
                                              std::string& refusal) {
    id root = nil;
    if (unarchiver != nil) {
        root = SystemArchivesRoot(unarchiver, allowedSet(allowed), &fault);
    }
    if (fault != nil) {
        refusal = Platform::Darwin::text(fault);
        return std::nullopt;
    }
    return Platform::Darwin::codedObjects(root, allowed, refusal);
}

/// Not by the name that the runtime tells: of a class that is named as Swift does, a Mac tells the other
/// form.
std::string nameOf(Class named) {
    const Base::CodedClass* const coded = Platform::Darwin::codedClassOf(named);
    const std::string name(coded != nullptr ? coded->runtimeName : class_getName(named));
    return NSClassFromString(Platform::Darwin::foundationString(name)) == named ? name : class_getName(named);
}

}  // namespace

Bytes archive(Base::CodedObjectList objects) {
    const Pool pool;
    NSData* const data = SystemArchivesArchive(Platform::Darwin::carrierList(std::move(objects)));
    const auto* const bytes = static_cast<const std::uint8_t*>([data bytes]);
    return {bytes, bytes + [data length]};
}

std::optional<Base::CodedObjectList> read(const Bytes& archive, const Base::AllowedClasses& allowed,
                                          std::string& refusal, FailurePolicy policy) {
    const Pool pool;
    const Class unarchiverClass =
        policy == FailurePolicy::raises ? [NSKeyedUnarchiver class] : [ErrorKeepingUnarchiver class];
    static_cast<void>(allowedSet(allowed));
    NSString* fault = nil;
    NSKeyedUnarchiver* const unarchiver = SystemArchivesUnarchiver(unarchiverClass, dataOf(archive), &fault);
    return readWith(unarchiver, allowed, fault, refusal);
}

std::vector<std::string> refusalsHeard(const Bytes& archive, const Base::AllowedClasses& allowed) {
    const Pool pool;
    NSString* fault = nil;
    NSKeyedUnarchiver* const unarchiver =
        SystemArchivesUnarchiver([ConnectionUnarchiver class], dataOf(archive), &fault);
    std::string refusal;
    static_cast<void>(readWith(unarchiver, allowed, fault, refusal));
    NSArray* const refusals = [[static_cast<ConnectionUnarchiver*>(unarchiver) connection] refusals];
    std::vector<std::string> heard;
    for (NSUInteger i = 0; i < [refusals count]; ++i) {
        heard.push_back(Platform::Darwin::text([refusals objectAtIndex:i]));
    }
    return heard;
}

std::string faultOfFailedCoder() {
    const Pool pool;
    NSString* fault = nil;
    const auto unarchiver = static_cast<ErrorKeepingUnarchiver*>(SystemArchivesUnarchiver(
        [ErrorKeepingUnarchiver class], SystemArchivesArchive([NSArray array]), &fault));
    NSDictionary* const details = [NSDictionary dictionaryWithObject:@"it has failed before"
                                                              forKey:NSLocalizedDescriptionKey];
    [unarchiver failWithError:[NSError errorWithDomain:NSCocoaErrorDomain code:1 userInfo:details]];
    Platform::Darwin::SystemCoder adapter(unarchiver);
    return adapter.decodeString("root") ? "none" : adapter.fault();
}

RuntimeClass runtimeClass(const Base::CodedClass& coded) {
    const Pool pool;
    const Class carrier = Platform::Darwin::carrierClass(coded);
    const SEL selector = @selector(supportsSecureCoding);
    bool isItsOwn = false;
    unsigned count = 0;
    Method* const methods = class_copyMethodList(object_getClass(carrier), &count);
    for (unsigned i = 0; i < count; ++i) {
        isItsOwn = isItsOwn || sel_isEqual(method_getName(methods[i]), selector) != NO;
    }
    free(methods);
    return {
        nameOf(carrier), nameOf(class_getSuperclass(carrier)), isItsOwn && [carrier supportsSecureCoding],
            [carrier conformsToProtocol:@protocol(NSSecureCoding)] != NO
    };
}

ExportedCommand exportedCommand(std::unique_ptr<Base::CodedObject> command, int weight) {
    const Pool pool;
    const id carrier = Platform::Darwin::carrierOwning(std::move(command));
    const id<CommandWithWeight> exported = carrier;
    const bool conforms = [[carrier class] conformsToProtocol:@protocol(_TtP13InstallCommon7Command_)] != NO;
    const int before = [exported weight];
    [exported setWeight:weight];
    const int after = [exported weight];
    [exported execute];
    return {conforms, Platform::Darwin::text([exported commandDescription]), before, after};
}

void encodeAfterLoan(const Base::CodedObject& object) {
    const Pool pool;
    PlatformDarwinCarrier* carrier = nil;
    {
        const Platform::Darwin::Loan loan(object);
        carrier = [loan.carrier() retain];
    }
    static_cast<void>(SystemArchivesArchive(carrier));
}

}  // namespace SystemArchives
