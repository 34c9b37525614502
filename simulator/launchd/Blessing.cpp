#include "launchd/Blessing.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include <sys/stat.h>

#include "Support/Files.h"
#include "Support/PropertyList.h"
#include "launchd/CodeIdentity.h"
#include "launchd/ElfSections.h"

namespace Simulator {

namespace {

constexpr std::size_t kMaximumHelper = 512U << 20U;
constexpr const char* kHelperTools = "/Library/PrivilegedHelperTools/";
constexpr const char* kDaemons = "/Library/LaunchDaemons/";

/// Whether a code-signing requirement names that identifier.
bool requirementNames(const PropertyList& requirement, const std::string& identifier) {
    if (!requirement.is_string()) {
        return false;
    }
    const auto& text = requirement.get_ref<const std::string&>();
    return text == identifier || text.find("identifier \"" + identifier + "\"") != std::string::npos ||
           text == "identifier " + identifier || text.starts_with("identifier " + identifier + " ");
}

bool anyRequirementNames(const PropertyList& info, const std::string& identifier) {
    const auto clients = info.find("SMAuthorizedClients");
    return clients != info.end() && clients->is_array() && !identifier.empty() &&
           std::any_of(clients->begin(), clients->end(),
                       [&](const PropertyList& client) { return requirementNames(client, identifier); });
}

std::optional<PropertyList> embeddedList(const std::string& tool, std::string_view section) {
    const auto bytes = elfSection(tool, section);
    return bytes ? parseHostilePropertyList(*bytes) : std::nullopt;
}

/// A version's numbers: 6, 3 and 630 of "6.3.630".
std::vector<std::uint64_t> numbersOf(const std::string& version) {
    std::vector<std::uint64_t> numbers;
    const char* next = version.data();
    const char* const end = next + version.size();
    while (next < end) {
        std::uint64_t number = 0;
        next = std::from_chars(next, end, number).ptr + 1;
        numbers.push_back(number);
    }
    return numbers;
}

/// A file that nobody but root can have written and that root may execute.
bool isRootsTool(const std::string& path) {
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == 0 &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0 && (status.st_mode & S_IXUSR) != 0;
}

}  // namespace

struct Blessing::Helper {
    std::string tool;
    PropertyList info;
    PropertyList launchd;
};

Blessing::Blessing(JobRegistry& jobs, SystemLogFile& log, const Authorizations& authorizations,
                   const Faults& faults)
    : jobs_(jobs), log_(log), authorizations_(authorizations), faults_(faults) {}

void Blessing::refuse(const std::string& label, int code, const std::string& why, const Done& done) {
    log_.write("Blessing of " + label + " refused: " + why);
    done(code, "The operation couldn\u2019t be completed. (CFErrorDomainLaunchd error " +
                   std::to_string(code) + ".)");
}

int Blessing::check(const Caller& caller, const std::string& label, Helper& helper, std::string& why) const {
    const std::string bundle = bundleOfExecutable(executableOfProcess(caller.pid).value_or(""));
    const auto infoBytes = bundle.empty() ? std::nullopt : readFile(bundle + "/Contents/Info.plist");
    const auto info = infoBytes ? parseHostilePropertyList(*infoBytes) : std::nullopt;
    if (!info) {
        why = "the caller is not an application with an Info.plist";
        return kSMErrorInvalidSignature;
    }
    const auto tools = info->find("SMPrivilegedExecutables");
    if (tools == info->end() || !tools->is_object() || !tools->contains(label)) {
        why = "the application's SMPrivilegedExecutables do not name it";
        return kSMErrorInvalidSignature;
    }
    auto tool = readFile(bundle + "/Contents/Library/LaunchServices/" + label, kMaximumHelper);
    if (!tool) {
        why = "the application does not contain it";
        return kSMErrorJobNotFound;
    }
    helper.tool = std::move(*tool);
    auto helperInfo = embeddedList(helper.tool, kInfoPlistSection);
    if (!helperInfo || !anyRequirementNames(*helperInfo, stringOf(*info, "CFBundleIdentifier"))) {
        why = "its SMAuthorizedClients do not name the application";
        return kSMErrorInvalidSignature;
    }
    auto launchd = embeddedList(helper.tool, kLaunchdPlistSection);
    if (!launchd) {
        why = "it carries no launchd property list";
        return kSMErrorJobPlistNotFound;
    }
    helper.info = std::move(*helperInfo);
    helper.launchd = std::move(*launchd);
    if (stringOf(helper.launchd, "Label") != label) {
        why = "its launchd property list has another label";
        return kSMErrorToolNotValid;
    }
    return 0;
}

void Blessing::bless(const Caller& caller, const std::string& token, const std::string& label,
                     const Done& done) {
    if ((label == kInstallerHelperLabel && faults_.contains("bless-installer")) ||
        (label == kSupportHelperLabel && faults_.contains("bless-support"))) {
        refuse(label, kSMErrorInternalFailure, "a fault was asked for", done);
        return;
    }
    if (!authorizations_.isValid(token, caller)) {
        refuse(label, kSMErrorAuthorizationFailure, "the caller holds no authorization", done);
        return;
    }
    if (!isUsableName(label)) {
        refuse(label, kSMErrorJobNotFound, "the label is unusable", done);
        return;
    }
    const auto helper = std::make_shared<Helper>();
    std::string why;
    if (const int code = check(caller, label, *helper, why); code != 0) {
        refuse(label, code, why, done);
        return;
    }
    settle(label, helper, done);
}

void Blessing::settle(const std::string& label, const std::shared_ptr<const Helper>& helper,
                      const Done& done) {
    jobs_.afterRemoval(DomainId{}, label, [this, label, helper, done] {
        // Of several that waited, the first installs and the others find it installed.
        const Job* job = jobs_.find(DomainId{}, label);
        if (job != nullptr && job->state == Job::State::stopping) {
            settle(label, helper, done);
        } else if (isInstalled(label, *helper)) {
            done(0, "");
        } else {
            install(label, *helper, done);
        }
    });
}

bool Blessing::isInstalled(const std::string& label, const Helper& helper) const {
    const std::string tool = kHelperTools + label;
    int code = 0;
    std::string why;
    const auto definition = readJobDefinition(kDaemons + label + ".plist", 0, code, why);
    const Job* job = jobs_.find(DomainId{}, label);
    if (job == nullptr || job->definition.program != tool || !definition || definition->label != label ||
        definition->program != tool || !isRootsTool(tool)) {
        return false;
    }
    const auto bytes = readFile(tool, kMaximumHelper);
    const auto info = bytes ? embeddedList(*bytes, kInfoPlistSection) : std::nullopt;
    const auto launchd = bytes ? embeddedList(*bytes, kLaunchdPlistSection) : std::nullopt;
    if (!info || !launchd || stringOf(*launchd, "Label") != label) {
        return false;
    }
    const auto installed = numbersOf(stringOf(*info, "CFBundleVersion"));
    const auto offered = numbersOf(stringOf(helper.info, "CFBundleVersion"));
    return installed > offered || (installed == offered && *bytes == helper.tool);
}

void Blessing::install(const std::string& label, const Helper& helper, const Done& done) {
    const std::string tool = kHelperTools + label;
    const std::string plist = kDaemons + label + ".plist";
    PropertyList launchd = helper.launchd;
    launchd["ProgramArguments"] = PropertyList::array({tool});
    launchd.erase("Program");
    std::error_code ignored;
    std::filesystem::create_directories(kHelperTools, ignored);
    std::filesystem::create_directories(kDaemons, ignored);
    if (!replaceFile(tool, helper.tool, 0544) ||
        !replaceFile(plist, writePropertyList(launchd, PropertyListForm::xml), 0644)) {
        refuse(label, kSMErrorInternalFailure, "its files cannot be written", done);
        return;
    }
    // An older job of that label goes first; there may be none.
    jobs_.bootout(DomainId{}, label, [this, label, plist, done](int) {
        if (const int code = jobs_.bootstrap(DomainId{}, plist); code != 0) {
            refuse(label, kSMErrorInternalFailure, "its job cannot be loaded", done);
            return;
        }
        done(0, "");
    });
}

}  // namespace Simulator
