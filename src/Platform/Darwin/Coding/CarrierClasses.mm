#import "Platform/Darwin/Coding/CarrierClasses.h"

#import <objc/runtime.h>

#include <algorithm>
#include <mutex>
#include <string>

#include "Base/FatalError.h"
#import "Platform/Darwin/Coding/Carrier.h"
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

/// Each class answers supportsSecureCoding itself: the system asks that of a class that decodes.
void stateSecureCoding(Class carrier) {
    const SEL selector = @selector(supportsSecureCoding);
    const Class meta = object_getClass(carrier);
    const Method inherited = class_getClassMethod([PlatformDarwinCarrier class], selector);
    class_addMethod(meta, selector, method_getImplementation(inherited), method_getTypeEncoding(inherited));
}

Class makeClass(const Base::CodedClass& coded, Class superclass) {
    const std::string name(coded.runtimeName);
    const Class carrier = objc_allocateClassPair(superclass, name.c_str(), 0);
    if (carrier == Nil) {
        Base::fatalError("The class " + name + " exists already, from elsewhere.");
    }
    stateSecureCoding(carrier);
    objc_registerClassPair(carrier);
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
    const Class superclass = coded.superclass != nullptr ? findOrMake(registrations, *coded.superclass)
                                                         : [PlatformDarwinCarrier class];
    const Class carrier = makeClass(coded, superclass);
    registrations.push_back({&coded, carrier});
    return carrier;
}

}  // namespace

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
