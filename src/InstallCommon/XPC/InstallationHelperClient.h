#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "Base/URL.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "NorvikCommon/XPCClient.h"

namespace InstallCommon {

/// Called once per executed command, on the connection's own thread: the command's description, the total
/// weight of the list, the weight executed so far. The run is finished when the two weights are equal.
using ProgressNotificationBlock = std::function<void(const std::string& description, std::int32_t totalWeight,
                                                     std::int32_t executedWeight)>;

/// Drives an installation or uninstallation.
class InstallationService {
  public:
    virtual ~InstallationService() = default;

    [[nodiscard]] virtual const ProgressNotificationBlock& progressNotificationBlock() const = 0;
    /// Set this before the run; may be empty.
    virtual void setProgressNotificationBlock(ProgressNotificationBlock block) = 0;
    /// The payload lies in `sourceDirectory`, its three parts in the subfolders named.
    virtual void install(const Base::URL& sourceDirectory, const std::string& applicationsSubdir,
                         const std::string& launchdJobsSubdir, const std::string& supportFilesSubdir) = 0;
    virtual void uninstall() = 0;
};

/// The one object through which an owner drives the installer helper: one run per client. It decides whether
/// the run is allowed, builds the list of commands, sums their weights, hands the list over in one message
/// and turns the helper's calls into progress reports. Owned by a shared pointer, which the connection shares
/// while it lives.
class InstallationHelperClient final : public NorvikCommon::XPCClient,
                                       public InstallationService,
                                       public CommandExecutingDelegate {
  public:
    /// A client of the installer helper's privileged service; touches nothing.
    InstallationHelperClient();
    /// Not available on this class: a programming error that ends the process.
    [[noreturn]] InstallationHelperClient(std::string machServiceName, bool isServicePrivileged);

    [[nodiscard]] const ProgressNotificationBlock& progressNotificationBlock() const override {
        return progressNotificationBlock_;
    }
    void setProgressNotificationBlock(ProgressNotificationBlock block) override {
        progressNotificationBlock_ = std::move(block);
    }

    /// Whether the owner forces an over-install; initially false.
    [[nodiscard]] bool shouldOverinstall() const { return shouldOverinstall_; }
    void setShouldOverinstall(bool shouldOverinstall) { shouldOverinstall_ = shouldOverinstall; }

    /// The helper's proxy after connecting, or null.
    [[nodiscard]] const std::shared_ptr<CommandExecuting>& remoteObject() const { return remoteObject_; }
    /// The sum of the weights of the list last sent.
    [[nodiscard]] std::int32_t totalCommandsWeight() const { return totalCommandsWeight_; }
    void setTotalCommandsWeight(std::int32_t weight) { totalCommandsWeight_ = weight; }

    /// Whether this program may remove the installed product: it is installed and not newer. Logs what the
    /// environment check logs at its first use.
    [[nodiscard]] bool canUninstall() const;

    /// The kind of installation that this Mac needs.
    struct EnvironmentCheck {
        bool canInstall = false;
        bool shouldUpdate = false;
        bool shouldOverinstall = false;
        friend bool operator==(const EnvironmentCheck&, const EnvironmentCheck&) = default;
    };

    /// Nothing may be installed beside another antivirus ("[SNTM Installer] There is other antivirus
    /// installed.") or over the same or a newer version ("[SNTM Installer] Has same or newer Norvik
    /// installed."); an older one is updated, or over-installed if it cannot be.
    [[nodiscard]] EnvironmentCheck checkInstallationEnvironment() const;

    /// Checks the environment and sends the list that fits: the over-install list if the environment or the
    /// owner asks for it ("[SNTM Installer] Overinstall..."), else the update list ("[SNTM Installer]
    /// Update..."), else the clean-install list ("[SNTM Installer] Clean install..."). If refused: "[SNTM
    /// Installer] Can not install antivirus.", and no connection is made. Returns as `uninstall` does.
    void install(const Base::URL& sourceDirectory, const std::string& applicationsSubdir,
                 const std::string& launchdJobsSubdir, const std::string& supportFilesSubdir) override;

    /// Sends the uninstall and cleanup commands and returns as soon as they are handed over; results arrive
    /// only through the progress block. Without a proxy nothing is sent or reported. Logs nothing.
    void uninstall() override;

    /// Sums the weights, connects anew and hands the list over in one message, as `uninstall` does with its
    /// list.
    void send(CommandList commands);

    /// The helper's call. Weights add up from the client's creation; an overflow ends the process.
    void commandExecutingDidExecuteCommand(const std::string& description, std::int32_t withWeight) override;

  protected:
    void willResumeConnection(Platform::XPCConnection& connection) override;
    void didResumeConnection(Platform::XPCConnection& connection) override;

  private:
    ProgressNotificationBlock progressNotificationBlock_;
    bool shouldOverinstall_ = false;
    std::shared_ptr<CommandExecuting> remoteObject_;
    std::int32_t totalCommandsWeight_ = 0;
    std::int32_t executedCommandsWeight_ = 0;
};

}  // namespace InstallCommon
