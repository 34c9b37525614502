#include "Helpers/Retirement.h"

#include <utility>
#include <vector>

#include "Helpers/LaunchdJob.h"
#include "Helpers/PackageInstaller.h"
#include "InstallCommon/ComponentPathProvider+Legacy.h"
#include "NorvikCommon/Product Paths Information/SystemPathProvider.h"
#include "Platform/SystemPorts.h"

namespace Helpers {

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kSecond = 1000 * kMillisecond;
/// The polling interval for changes that launchd does not announce.
constexpr std::int64_t kPoll = 20 * kMillisecond;
/// An idle support helper leaves after 2 seconds. One that stays longer serves somebody else.
constexpr std::int64_t kSupportHelperPatience = 5 * kSecond;
constexpr std::int64_t kSupportHelperPoll = 200 * kMillisecond;
/// Far longer than launchd takes to learn of a removal.
constexpr std::int64_t kRequestPatience = 10 * kSecond;
constexpr std::int64_t kAnswerPatience = 2 * kSecond;

/// A helper tool in the place that launchd's blessing gives it.
NorvikCommon::DaemonInfo blessedTool(const std::string& label) {
    const Base::URL tools = NorvikCommon::SystemPathProvider::privilegedHelperTools();
    const Base::URL plist =
        NorvikCommon::SystemPathProvider::daemonsPlists().appendingPathComponent(label + ".plist");
    return NorvikCommon::DaemonInfo::daemonWithExecutable(
        NorvikCommon::FilesystemItemInfo::itemWithPath(tools.appendingPathComponent(label)),
        NorvikCommon::LaunchdInfo::launchdWithLabel(label, plist));
}

bool isGone(const NorvikCommon::DaemonInfo& tool) {
    Platform::FileManager& files = Platform::SystemPorts::current().files;
    return !files.itemExists(*tool.executable->location) && !files.itemExists(*tool.launchd->plistLocation());
}

std::optional<Platform::FileIdentity> identityOf(const NorvikCommon::DaemonInfo& tool) {
    return Platform::SystemPorts::current().files->identity(*tool.executable->location);
}

void takeRemovedToolsOutOfLaunchd(const std::string& ownLabel) {
    for (const NorvikCommon::DaemonInfo& tool :
         InstallCommon::ComponentPathProvider::auxiliaryHelperTools()) {
        if (*tool.launchd->label != ownLabel && isGone(tool)) {
            bootOut(*tool.launchd->label);
        }
    }
}

}  // namespace

Retirement::Retirement(std::string ownLabel, std::string supportLabel, Platform::XPCListener& listener)
    : ownLabel_(std::move(ownLabel)),
      supportLabel_(std::move(supportLabel)),
      requests_(Platform::SystemPorts::current().dispatch->makeSemaphore(0)) {
    Platform::SystemPorts::current().termination->onRequest([requests = requests_, &listener] {
        listener.stop();
        requests->signal();
    });
}

void Retirement::listBegins() {
    supportTool_ = identityOf(blessedTool(supportLabel_));
}

void Retirement::listEnds(const std::function<bool()>& isAnotherWaiting) {
    const NorvikCommon::DaemonInfo own = blessedTool(ownLabel_);
    if (!isGone(own)) {
        return;
    }
    const bool isSupportHelperDone = waitForSupportHelper(isAnotherWaiting);
    if (isAnotherWaiting()) {
        return;
    }
    if (isSupportHelperDone) {
        removeSupportHelper();
    }
    takeRemovedToolsOutOfLaunchd(ownLabel_);
    if (isGone(own) && !isAnotherWaiting()) {
        removeOwnJob();
    }
}

/// Whoever uses the support helper is about to send a list, perhaps to this process, which waits for it. True
/// if launchd says that the support helper does not run.
bool Retirement::waitForSupportHelper(const std::function<bool()>& isAnotherWaiting) {
    const Platform::SystemPorts& ports = Platform::SystemPorts::current();
    const std::unique_ptr<Platform::Semaphore> never = ports.dispatch->makeSemaphore(0);
    const std::uint64_t deadline = ports.clock->time(kSupportHelperPatience);
    while (stateOfJob(supportLabel_) == JobState::running) {
        if (isAnotherWaiting() || ports.clock->now() >= deadline) {
            return false;
        }
        static_cast<void>(never->wait(ports.clock->time(kSupportHelperPoll)));
    }
    return true;
}

void Retirement::removeSupportHelper() {
    const NorvikCommon::DaemonInfo support = blessedTool(supportLabel_);
    if (identityOf(support) != supportTool_) {
        return;
    }
    // The job first: launchd must never find a job without its tool. If it keeps the job, the tool stays.
    if (!bootOut(supportLabel_) && stateOfJob(supportLabel_) != JobState::absent) {
        return;
    }
    if (identityOf(support) == supportTool_) {
        Platform::FileManager& files = Platform::SystemPorts::current().files;
        static_cast<void>(files.removeItem(*support.executable->location));
        static_cast<void>(files.removeItem(*support.launchd->plistLocation()));
        static_cast<void>(removeLeftPackage());
    }
}

void Retirement::removeOwnJob() {
    const Platform::SystemPorts& ports = Platform::SystemPorts::current();
    while (requests_->wait(ports.clock->now())) {
        // An earlier request does not tell whether launchd has learned of this removal.
    }
    const std::unique_ptr<Platform::Task> launchctl = startBootOut(ownLabel_);
    if (launchctl == nullptr) {
        return;
    }
    if (waitForRequest(*launchctl) && !isGone(blessedTool(ownLabel_))) {
        // The request came from a blessing that replaces this process. A launchctl that is still under way
        // must not reach launchd after this process has gone: it would remove the new job.
        const std::uint64_t deadline = ports.clock->time(kAnswerPatience);
        while (launchctl->isRunning() && ports.clock->now() < deadline) {
            static_cast<void>(requests_->wait(ports.clock->time(kPoll)));
        }
    }
    // launchd has accepted the removal; launchctl would wait for this process to end.
    launchctl->kill();
}

/// True if launchd has asked this process to end; false if launchctl has ended or time has run out before.
bool Retirement::waitForRequest(Platform::Task& launchctl) {
    const Platform::SystemPorts& ports = Platform::SystemPorts::current();
    const std::uint64_t deadline = ports.clock->time(kRequestPatience);
    while (launchctl.isRunning() && ports.clock->now() < deadline) {
        if (requests_->wait(ports.clock->time(kPoll))) {
            return true;
        }
    }
    return false;
}

}  // namespace Helpers
