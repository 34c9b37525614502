#include "support/FakeLaunchd.h"

namespace TestSupport {

namespace {

using Result = FakeTaskRunner::Result;

constexpr const char* kTool = "/bin/launchctl";

Result failed(const std::string& text, std::int32_t status) {
    return {"", text + "\n", status};
}

Result notBootedOut(std::int32_t status, const std::string& reason) {
    return failed("Boot-out failed: " + std::to_string(status) + ": " + reason, status);
}

std::string userDomain(std::uint32_t user) {
    return "gui/" + std::to_string(user);
}

}  // namespace

FakeLaunchd::FakeLaunchd(FakeMac& mac) : mac_(mac) {
    mac_.tasks.answer = [this](const std::string& path, const std::vector<std::string>& arguments) {
        return path == kTool ? std::optional(run(arguments, mac_.users.real, mac_.users.effective))
                             : std::nullopt;
    };
}

Result FakeLaunchd::run(const std::vector<std::string>& arguments, std::uint32_t realUser,
                        std::uint32_t effectiveUser) {
    std::string text;
    for (const std::string& argument : arguments) {
        text += (text.empty() ? "" : " ") + argument;
    }
    calls.push_back({text, realUser, effectiveUser});
    if (arguments.size() == 2 && arguments[0] == "print") {
        return print(arguments[1]);
    }
    if (arguments.size() == 3 && arguments[0] == "bootout") {
        return bootout(arguments[1], arguments[2], effectiveUser);
    }
    return failed("Usage: launchctl <subcommand> ...", 64);
}

Result FakeLaunchd::print(const std::string& target) const {
    const std::size_t slash = target.rfind('/');
    const std::string label = target.substr(slash + 1);
    const auto job = jobs.find({target.substr(0, slash), label});
    return job != jobs.end()
               ? Result{job->second, ""}
               : failed("Could not find service \"" + label + "\" in domain for " + target.substr(0, slash),
                        113);
}

Result FakeLaunchd::bootout(const std::string& domain, const std::string& propertyList,
                            std::uint32_t caller) {
    if (caller != 0 && domain != userDomain(caller)) {
        return notBootedOut(1, "Operation not permitted");
    }
    bool exists = domain == "system";
    for (const std::uint32_t user : sessions) {
        exists = exists || domain == userDomain(user);
    }
    if (!exists) {
        return notBootedOut(125, "Domain does not support specified action");
    }
    const std::string label = labelIn(propertyList);
    if (label.empty()) {
        return notBootedOut(5, "Input/output error");
    }
    if (!jobs.contains({domain, label})) {
        return notBootedOut(3, "No such process");
    }
    if (stuck.contains({domain, label})) {
        return notBootedOut(5, "Input/output error");
    }
    jobs.erase({domain, label});
    return {};
}

std::string FakeLaunchd::labelIn(const std::string& propertyList) const {
    auto item = mac_.files.nodes.find(propertyList);
    // launchd follows a link.
    if (item != mac_.files.nodes.end() && item->second.kind == FakeFileManager::Node::Kind::link) {
        item = mac_.files.nodes.find(item->second.target);
    }
    return item != mac_.files.nodes.end() && item->second.kind == FakeFileManager::Node::Kind::file
               ? item->second.contents
               : "";
}

}  // namespace TestSupport
