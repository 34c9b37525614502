// Install Sentrel: plays the product's installer in a simulated Mac. It authorizes, blesses both helpers, has
// the runtime support installed and drives the same client as the uninstaller does.

#include <unistd.h>

#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/SupportPrivilegedHelperClient.h"
#include "InstallCommon/XPC/InstallationHelperClient.h"
#include "NorvikCommon/AuthorizationUtils.h"
#include "NorvikCommon/PrivilegedHelperUtils.h"
#include "Platform/SystemPorts.h"
#include "Support/PayloadFolders.h"

namespace {

using InstallCommon::InstallationHelperClient;
using InstallCommon::SupportPrivilegedHelperClient;

constexpr int kFinished = 0;
constexpr int kFailed = 1;
constexpr int kMisuse = 2;
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

struct Request {
    std::string payload;
    bool forceOverinstall = false;
    unsigned timeout = 120;
};

int fail(int status, const std::string& line) {
    std::cerr << "Install Sentrel: " << line << std::endl;
    return status;
}

bool blessHelpers(const Platform::SFAuthorization& authorization) {
    const std::string installerHelper(InstallCommon::InstallHelper::machServiceName);
    return NorvikCommon::BlessHelperWithLabel(installerHelper, authorization) &&
           SupportPrivilegedHelperClient::blessHelper(authorization);
}

void printProgress(const std::string& description, std::int32_t total, std::int32_t executed) {
    const double percent = executed / (total / 100.0);
    std::cout << std::fixed << std::setprecision(1) << std::setw(5) << percent << " %  " << description
              << std::endl;
}

/// Lives until the process ends: the connection's thread may still use the client then.
const std::shared_ptr<InstallationHelperClient>& theClient() {
    static const auto* const instance =
        new std::shared_ptr<InstallationHelperClient>(std::make_shared<InstallationHelperClient>());
    return *instance;
}

int install(const Request& request) {
    const Platform::SystemPorts& ports = Platform::SystemPorts::current();
    const std::shared_ptr<Platform::Semaphore> finished = ports.dispatch->makeSemaphore(0);
    InstallationHelperClient& client = *theClient();
    client.setShouldOverinstall(request.forceOverinstall);
    client.setProgressNotificationBlock(
        [finished](const std::string& description, std::int32_t total, std::int32_t executed) {
            printProgress(description, total, executed);
            if (executed == total) {
                finished->signal();
            }
        });
    client.install(Base::URL::fileURL(request.payload), Simulator::kApplicationsFolder,
                   Simulator::kLaunchdJobsFolder, Simulator::kSupportFilesFolder);
    // No list is empty: a weight of 0 means that none was made.
    if (client.totalCommandsWeight() == 0) {
        return fail(kFailed, "the installation was refused; the system log says why");
    }
    if (!finished->wait(ports.clock->time(request.timeout * kNanosecondsPerSecond))) {
        return fail(kFailed,
                    "no report of the end came within " + std::to_string(request.timeout) + " seconds");
    }
    return kFinished;
}

int run(const Request& request) {
    const bool isRoot = ::geteuid() == 0;
    const auto authorization = NorvikCommon::AuthorizationUtils::authorizationForRootAction(!isRoot);
    if (authorization == nullptr) {
        return fail(kFailed, "the administrator's authorization was not granted");
    }
    if (!blessHelpers(*authorization)) {
        return fail(kFailed, "the privileged helpers could not be installed; the system log says why");
    }
    if (!SupportPrivilegedHelperClient::installSwiftSupportPackage()) {
        return fail(kFailed, "the runtime support could not be installed; the system log says why");
    }
    return install(request);
}

}  // namespace

int main(int argc, char** argv) {
    Platform::SystemPorts::setCurrent(&Platform::createSystemPorts());
    CLI::App app{"Installs Sentrel from a payload", "Install Sentrel"};
    Request request;
    app.add_option("PAYLOAD", request.payload, "The payload's folder, an absolute path")->required();
    app.add_flag("--force-overinstall", request.forceOverinstall, "Over-installs whatever is installed");
    app.add_option("--timeout", request.timeout, "Seconds to wait for the end")->check(CLI::Range(1U, 3600U));
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& error) {
        return fail(kMisuse, error.what());
    }
    if (!request.payload.starts_with('/')) {
        return fail(kMisuse, "the payload's folder needs an absolute path");
    }
    return run(request);
}
