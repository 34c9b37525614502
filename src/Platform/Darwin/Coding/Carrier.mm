#import "Platform/Darwin/Coding/Carrier.h"

#include <array>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "Base/FatalError.h"
#import "Platform/Darwin/Coding/CarrierClasses.h"
#import "Platform/Darwin/Coding/SystemCoder.h"
#include "Platform/Darwin/FoundationBridge.h"

using Platform::Darwin::SystemCoder;

namespace {

// NSCoderReadCorruptError.
constexpr NSInteger kReadCorrupt = 4864;

/// The object of this class that the coder is at, owned by the caller. Null, and one line in `why`, if there
/// is none.
const Base::CodedObject* decodedObject(const Base::CodedClass* coded, NSCoder* coder, NSString** why) {
    if (coded == nullptr || coded->decode == nullptr) {
        *why = @"an object of a class that is not decoded";
        return nullptr;
    }
    SystemCoder adapter(coder);
    std::unique_ptr<Base::CodedObject> object = coded->decode(adapter);
    if (object != nullptr && adapter.fault().empty()) {
        return object.release();
    }
    std::string text(coded->runtimeName);
    if (!adapter.fault().empty()) {
        text += ": " + adapter.fault();
    } else if (!adapter.missingKey().empty()) {
        text += ": key \"" + adapter.missingKey() + "\" is missing";
    } else {
        text += ": its keys do not make an object";
    }
    *why = Platform::Darwin::foundationString(text);
    return nullptr;
}

/// Fails the coder, whose policy decides between an exception and an error that it keeps; a coder that knows
/// no errors raises. No C++ object may live in the caller.
void failCoder(NSCoder* coder, NSString* why) {
    if (![coder respondsToSelector:@selector(failWithError:)]) {
        [NSException raise:NSInvalidUnarchiveOperationException format:@"%@", why];
    }
    NSDictionary* const details = [NSDictionary dictionaryWithObject:why forKey:NSLocalizedDescriptionKey];
    NSError* const error = [NSError errorWithDomain:NSCocoaErrorDomain code:kReadCorrupt userInfo:details];
    [coder performSelector:@selector(failWithError:) withObject:error];
}

/// A connection's coder knows its connection. The system drops a message that it cannot decode and goes on;
/// the object that the connection exports may want to hear of it.
void tellExportedObject(NSCoder* coder, NSString* why) {
    if (![coder respondsToSelector:@selector(connection)]) {
        return;
    }
    const id connection = [coder performSelector:@selector(connection)];
    if (![connection respondsToSelector:@selector(exportedObject)]) {
        return;
    }
    const id exported = [connection performSelector:@selector(exportedObject)];
    if ([exported respondsToSelector:@selector(refuseMessage:onConnection:)]) {
        [exported performSelector:@selector(refuseMessage:onConnection:)
                       withObject:why
                       withObject:connection];
    }
}

}  // namespace

@implementation PlatformDarwinCarrier

+ (BOOL)supportsSecureCoding {
    return YES;
}

- (id)initCarrying:(const Base::CodedObject*)object owned:(BOOL)owned {
    self = [super init];
    if (self != nil) {
        object_ = object;
        owns_ = owned;
    }
    return self;
}

- (id)initWithCoder:(NSCoder*)coder {
    NSString* why = nil;
    self = [self initCarrying:decodedObject(Platform::Darwin::codedClassOf([self class]), coder, &why)
                        owned:YES];
    if (self != nil && object_ == nullptr) {
        tellExportedObject(coder, why);
        failCoder(coder, why);
        [self release];
        return nil;
    }
    return self;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    if (object_ == nullptr) {
        Base::fatalError("A carrier was encoded after the object that it carried had gone.");
    }
    SystemCoder adapter(coder);
    object_->encode(adapter);
}

- (const Base::CodedObject*)carriedObject {
    return object_;
}

- (void)endLoan {
    object_ = nullptr;
}

- (void)dealloc {
    if (owns_) {
        delete object_;
    }
    [super dealloc];
}

@end

namespace Platform::Darwin {

PlatformDarwinCarrier* carrierOwning(std::unique_ptr<Base::CodedObject> object) {
    const Class carrier = carrierClass(object->codedClass());
    return [[[carrier alloc] initCarrying:object.release() owned:YES] autorelease];
}

Loan::Loan(const Base::CodedObject& object)
    : carrier_([[carrierClass(object.codedClass()) alloc] initCarrying:&object owned:NO]) {}

Loan::~Loan() {
    [carrier_ endLoan];
    [carrier_ release];
}

const Base::CodedObject* carriedObject(id value) {
    return codedClassOf([value class]) != nullptr ? [value carriedObject] : nullptr;
}

std::unique_ptr<Base::CodedObject> copyOf(const Base::CodedObject& object, std::string& refusal) {
    static constexpr std::array<std::string_view, 4> kValues{"NSArray", "NSURL", "NSString", "NSNumber"};
    const std::array<const Base::CodedObject*, 1> original{&object};
    const std::vector<const Base::CodedClass*> classes = registeredClasses();
    std::optional<Base::CodedObjectList> copies =
        Base::unarchivedArray(Base::archivedArray(original), {classes, kValues}, refusal);
    return copies ? std::move(copies->front()) : nullptr;
}

NSArray* carrierList(Base::CodedObjectList objects) {
    NSMutableArray* const list = [NSMutableArray arrayWithCapacity:objects.size()];
    for (std::unique_ptr<Base::CodedObject>& object : objects) {
        [list addObject:carrierOwning(std::move(object))];
    }
    return [NSArray arrayWithArray:list];
}

std::optional<Base::CodedObjectList> codedObjects(id list, const Base::AllowedClasses& allowed,
                                                  std::string& refusal) {
    if (![list isKindOfClass:[NSArray class]]) {
        refusal = "it is not an array";
        return std::nullopt;
    }
    std::vector<const Base::CodedObject*> objects;
    const NSUInteger count = [list count];
    objects.reserve(count);
    for (NSUInteger i = 0; i < count; ++i) {
        const Base::CodedObject* const object = carriedObject([list objectAtIndex:i]);
        if (object == nullptr) {
            refusal = "command " + std::to_string(i + 1) + ": it is not an object of a coded class";
            return std::nullopt;
        }
        objects.push_back(object);
    }
    return Base::unarchivedArray(Base::archivedArray(objects), allowed, refusal);
}

}  // namespace Platform::Darwin
