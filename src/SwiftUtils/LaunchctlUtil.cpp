#include "SwiftUtils/LaunchctlUtil.h"

#include <vector>

#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "SwiftUtils/Process+Extensions.h"

namespace SwiftUtils {

namespace {

constexpr const char* kSystemDomain = "system";

std::string userDomain(std::uint32_t userId) {
    return "gui/" + std::to_string(userId);
}

bool runLaunchctl(const std::vector<std::string>& arguments) {
    const std::string tool = NorvikCommon::SystemPathProvider::launchctlExecutable().path();
    return execute(tool, arguments).terminationStatus() == 0;
}

bool runOnPlist(const std::string& verb, const std::string& domain, const Base::URL& plist) {
    return runLaunchctl({verb, domain, plist.path()});
}

bool runOnService(const std::string& verb, const std::string& domain, const std::string& label) {
    return runLaunchctl({verb, domain + "/" + label});
}

}  // namespace

bool LaunchctlUtil::bootstrapDaemon(const Base::URL& plist) {
    return runOnPlist("bootstrap", kSystemDomain, plist);
}

bool LaunchctlUtil::bootoutDaemon(const Base::URL& plist) {
    return runOnPlist("bootout", kSystemDomain, plist);
}

bool LaunchctlUtil::bootstrapAgent(const Base::URL& plist, std::uint32_t userId) {
    return runOnPlist("bootstrap", userDomain(userId), plist);
}

bool LaunchctlUtil::bootoutAgent(const Base::URL& plist, std::uint32_t userId) {
    return runOnPlist("bootout", userDomain(userId), plist);
}

bool LaunchctlUtil::enableDaemon(const std::string& label) {
    return runOnService("enable", kSystemDomain, label);
}

bool LaunchctlUtil::isDaemonRegistered(const std::string& label) {
    return runOnService("print", kSystemDomain, label);
}

bool LaunchctlUtil::enableAgent(const std::string& label, std::uint32_t userId) {
    return runOnService("enable", userDomain(userId), label);
}

bool LaunchctlUtil::isAgentRegistered(const std::string& label, std::uint32_t userId) {
    return runOnService("print", userDomain(userId), label);
}

}  // namespace SwiftUtils
