#import "Platform/Darwin/Coding/CarrierClasses.h"

#import <objc/runtime.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <string>

#include "Base/FatalError.h"
#import "Platform/Darwin/Coding/Carrier.h"
#import "Platform/Darwin/Coding/CommandExport.h"
#include "Platform/Darwin/FoundationBridge.h"

namespace Platform::Darwin {

namespace {

struct Registration {
    const Base::CodedClass* coded;
    Class carrier;
};

struct Registry {
    std::mutex mutex;
    std::vector<Registration> registrations;
};

/// Never destroyed: connections deliver until the process has ended.
Registry& registry() {
    static auto* const instance = new Registry;
    return *instance;
}

/// The fields of the model, in their order.
struct Field {
    const char* name;
    std::size_t size;
};
constexpr std::array<Field, 2> kFields{{{"object_", sizeof(void*)}, {"owns_", sizeof(BOOL)}}};

Ivar fieldOf(Class owner, const Field& field) {
    return class_getInstanceVariable(owner, field.name);
}

/// Makes `carrier`, which derives from NSObject as the model does, another of its kind.
void copyModel(Class carrier) {
    const Class model = [PlatformDarwinCarrier class];
    for (const Field& field : kFields) {
        const auto alignment = static_cast<std::uint8_t>(std::countr_zero(field.size));
        class_addIvar(carrier, field.name, field.size, alignment,
                      ivar_getTypeEncoding(fieldOf(model, field)));
    }
    addMethods(carrier, model);
    class_addProtocol(carrier, @protocol(NSSecureCoding));
}

/// The methods are compiled for the model: the fields of a carrier have to lie where the model's do.
void checkLayout(Class carrier) {
    for (const Field& field : kFields) {
        const Ivar copy = fieldOf(carrier, field);
        if (copy == nullptr ||
            ivar_getOffset(copy) != ivar_getOffset(fieldOf([PlatformDarwinCarrier class], field))) {
            Base::fatalError("The runtime lays out the field " + std::string(field.name) +
                             " in another way.");
        }
    }
}

/// Each class answers supportsSecureCoding itself: the system asks that of a class that decodes.
void stateSecureCoding(Class carrier) {
    const SEL selector = @selector(supportsSecureCoding);
    const Class meta = object_getClass(carrier);
    const Method inherited = class_getClassMethod([PlatformDarwinCarrier class], selector);
    class_addMethod(meta, selector, method_getImplementation(inherited), method_getTypeEncoding(inherited));
}

/// `superclass` is Nil for a class that derives from no other coded one.
Class makeClass(const Base::CodedClass& coded, Class superclass) {
    const std::string name(coded.runtimeName);
    const Class carrier =
        objc_allocateClassPair(superclass != Nil ? superclass : [NSObject class], name.c_str(), 0);
    if (carrier == Nil) {
        Base::fatalError("The class " + name + " exists already, from elsewhere.");
    }
    if (superclass == Nil) {
        copyModel(carrier);
    }
    stateSecureCoding(carrier);
    exportCommands(carrier, name.c_str());
    objc_registerClassPair(carrier);
    checkLayout(carrier);
    NSString* const archivedName = foundationString(name);
    [NSKeyedArchiver setClassName:archivedName forClass:carrier];
    [NSKeyedUnarchiver setClass:carrier forClassName:archivedName];
    return carrier;
}

/// With the registry's mutex held.
Class findOrMake(std::vector<Registration>& registrations, const Base::CodedClass& coded) {
    const auto found = std::find_if(registrations.begin(), registrations.end(),
                                    [&coded](const Registration& each) { return each.coded == &coded; });
    if (found != registrations.end()) {
        return found->carrier;
    }
    const Class superclass = coded.superclass != nullptr ? findOrMake(registrations, *coded.superclass) : Nil;
    const Class carrier = makeClass(coded, superclass);
    registrations.push_back({&coded, carrier});
    return carrier;
}

}  // namespace

void addMethods(Class carrier, Class model) {
    unsigned count = 0;
    Method* const methods = class_copyMethodList(model, &count);
    for (unsigned i = 0; i < count; ++i) {
        class_addMethod(carrier, method_getName(methods[i]), method_getImplementation(methods[i]),
                        method_getTypeEncoding(methods[i]));
    }
    std::free(methods);
}

Class carrierClass(const Base::CodedClass& coded) {
    const Pool pool;
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    return findOrMake(all.registrations, coded);
}

const Base::CodedClass* codedClassOf(Class carrier) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    const auto found = std::find_if(all.registrations.begin(), all.registrations.end(),
                                    [carrier](const Registration& each) { return each.carrier == carrier; });
    return found != all.registrations.end() ? found->coded : nullptr;
}

std::vector<const Base::CodedClass*> registeredClasses() {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    std::vector<const Base::CodedClass*> classes;
    classes.reserve(all.registrations.size());
    for (const Registration& each : all.registrations) {
        classes.push_back(each.coded);
    }
    return classes;
}

}  // namespace Platform::Darwin
