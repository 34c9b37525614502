// What the Objective-C runtime knows of the program's classes and protocols.

#include <dlfcn.h>
#import <objc/runtime.h>

#include <cstring>
#include <set>
#include <utility>

#include "Check.h"
#include "InstallCommon/Command.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#import "Platform/Darwin/Coding/Carrier.h"
#include "Platform/Darwin/FoundationBridge.h"
#import "Platform/Darwin/XPC/Protocols.h"

namespace Selftest {

namespace {

using Platform::Darwin::carrierClass;
using Platform::Darwin::foundationString;

struct ByName {
    bool operator()(const Base::CodedClass* left, const Base::CodedClass* right) const {
        return left->runtimeName < right->runtimeName;
    }
};

/// The classes that travel, and those that they derive from, in the order of their names.
std::set<const Base::CodedClass*, ByName> codedClasses() {
    std::set<const Base::CodedClass*, ByName> classes;
    for (const Base::CodedClass* each : InstallCommon::allowedCommandListClasses().objects) {
        for (; each != nullptr; each = each->superclass) {
            classes.insert(each);
        }
    }
    return classes;
}

/// "_TtC13InstallCommon13CopyCommand" as "InstallCommon.CopyCommand"; nothing for a plain name.
std::string secondForm(std::string_view name) {
    constexpr std::string_view kPrefix = "_TtC";
    if (!name.starts_with(kPrefix)) {
        return {};
    }
    std::string result;
    name.remove_prefix(kPrefix.size());
    while (!name.empty()) {
        std::size_t length = 0;
        while (!name.empty() && name.front() >= '0' && name.front() <= '9') {
            length = length * 10 + static_cast<std::size_t>(name.front() - '0');
            name.remove_prefix(1);
        }
        if (length == 0 || length > name.size()) {
            return {};
        }
        result += (result.empty() ? "" : ".") + std::string(name.substr(0, length));
        name.remove_prefix(length);
    }
    return result;
}

Outcome checkRuntimeNames() {
    for (const Base::CodedClass* const coded : codedClasses()) {
        const Class carrier = carrierClass(*coded);
        if (NSClassFromString(foundationString(coded->runtimeName)) != carrier) {
            return failed("the runtime does not find " + std::string(coded->runtimeName));
        }
    }
    return passed(std::to_string(codedClasses().size()) + " classes");
}

Outcome checkSecondNames() {
    std::string shown;
    int count = 0;
    for (const Base::CodedClass* const coded : codedClasses()) {
        const Class carrier = carrierClass(*coded);
        const std::string second = secondForm(coded->runtimeName);
        if (second.empty()) {
            continue;
        }
        if (NSClassFromString(foundationString(second)) != carrier) {
            return failed("the runtime does not find " + second);
        }
        ++count;
        shown = Platform::Darwin::text(NSStringFromClass(carrier));
    }
    return passed(std::to_string(count) + " classes; the runtime itself says " + shown);
}

Outcome checkSecureCoding() {
    Protocol* const secureCoding = NSProtocolFromString(@"NSSecureCoding");
    for (const Base::CodedClass* const coded : codedClasses()) {
        const Class carrier = carrierClass(*coded);
        if (secureCoding == nil || ![carrier conformsToProtocol:secureCoding] ||
            ![carrier supportsSecureCoding]) {
            return failed(std::string(coded->runtimeName) + " states no secure coding");
        }
    }
    return passed();
}

/// What the runtime can ask a command for, whose base exports it.
Outcome checkExportedCommands() {
    const Class base = carrierClass(InstallCommon::CommandConcrete::staticClass());
    Protocol* const protocol = NSProtocolFromString(@"_TtP13InstallCommon7Command_");
    if (protocol == nil || ![base conformsToProtocol:protocol]) {
        return failed("the base of the commands does not conform to InstallCommon.Command");
    }
    const std::pair<const char*, const char*> methods[] = {{"commandDescription", "@16@0:8"},
                                                           {"weight", "i16@0:8"},
                                                           {"setWeight:", "v20@0:8i16"},
                                                           {"execute", "v16@0:8"}};
    for (const auto& [selector, types] : methods) {
        const Method method = class_getInstanceMethod(base, sel_registerName(selector));
        if (method == nullptr || std::strcmp(method_getTypeEncoding(method), types) != 0) {
            return failed(std::string(selector) + " is not there, or of other types than " + types);
        }
    }
    return passed();
}

/// What NSXPCInterface reads of a protocol's method: the types with the names of classes and the shape of
/// blocks. The runtime's own operation, in no public header.
using MethodTypes = const char* (*)(Protocol*, SEL, BOOL isRequired, BOOL isInstance);

struct ExpectedTypes {
    Protocol* protocol;
    SEL selector;
    const char* types;
};

Outcome checkProtocols() {
    void* const symbol = ::dlsym(RTLD_DEFAULT, "_protocol_getMethodTypeEncoding");
    if (symbol == nullptr) {
        return skipped("the runtime does not tell the types of a protocol");
    }
    MethodTypes typesOf = nullptr;
    std::memcpy(&typesOf, &symbol, sizeof typesOf);
    // The same for every processor: BOOL, which is another type on Apple silicon, is in none of them.
    const ExpectedTypes all[] = {
        {@protocol(CommandExecuting), @selector(executeWithCommands:delegate:),
         "v32@0:8@\"NSArray\"16@\"<CommandExecutingDelegate>\"24"},
        {@protocol(CommandExecutingDelegate), @selector(commandExecutingDidExecuteCommand:withWeight:),
         "v28@0:8@\"NSString\"16i24"},
        {@protocol(NVKSupportPrivilegedHelper), @selector(installSwiftSupportPackage:completion:),
         "v32@0:8@\"NSURL\"16@?<v@?@\"NSError\">24"}};
    for (const ExpectedTypes& each : all) {
        const char* const types = typesOf(each.protocol, each.selector, YES, YES);
        if (types == nullptr || std::strcmp(types, each.types) != 0) {
            return failed(std::string(sel_getName(each.selector)) + " has the types " +
                          (types != nullptr ? types : "(none)") + ", not " + each.types);
        }
    }
    return passed("3 methods");
}

}  // namespace

Checks runtimeChecks() {
    return {{"runtime.names", checkRuntimeNames},
            {"runtime.second-names", checkSecondNames},
            {"runtime.secure-coding", checkSecureCoding},
            {"runtime.exported-commands", checkExportedCommands},
            {"runtime.protocol-types", checkProtocols}};
}

}  // namespace Selftest
