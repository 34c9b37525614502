#include <cerrno>
#include <cstring>
#include <filesystem>

#include <fcntl.h>
#include <sys/stat.h>

#include "macsim/Commands.h"
#include "macsim/HostPrograms.h"
#include "macsim/MacBuilder.h"
#include "macsim/MacRun.h"
#include "macsim/Payload.h"
#include "macsim/Refusal.h"
#include "macsim/Trees.h"

namespace Simulator {

namespace fs = std::filesystem;

namespace {

constexpr const char* kInstaller = "Install Sentrel.app";
constexpr const char* kVolumes = "/Volumes";
/// The path of the installer's disk image inside the Mac.
constexpr const char* kVolume = "/Volumes/Install Sentrel";

/// The installer and its payload in a Mac that does not run; removed at the end.
class InstallerVolume {
  public:
    explicit InstallerVolume(const MacRoot& mac) : folder_(mac.folder() + kVolume) {
        const Descriptor root = mac.open("/", O_RDONLY | O_DIRECTORY);
        static_cast<void>(::mkdirat(root.get(), kVolumes + 1, 0755));
        if (!mac.open(kVolumes, O_RDONLY | O_DIRECTORY | O_NOFOLLOW).valid()) {
            throw Refusal(std::string("cannot use ") + kVolumes + " of the Mac: " + std::strerror(errno));
        }
        // A killed run may have left an older one.
        remove();
    }
    InstallerVolume(const InstallerVolume&) = delete;
    InstallerVolume& operator=(const InstallerVolume&) = delete;
    ~InstallerVolume() {
        if (!isRemoved_) {
            static_cast<void>(removeTree(folder_));
        }
    }

    void fill(const std::string& payload, const BundleVersion& version) {
        isRemoved_ = false;
        MacBuilder builder(folder_, simulatorPrograms());
        builder.copyFolder(ownBundle(kInstaller), std::string("/") + kInstaller);
        setBundleVersion(folder_ + "/" + kInstaller, version);
        builder.copyFolder(payload, "/Payload");
    }

    void remove() {
        if (!removeTree(folder_)) {
            throw Refusal("cannot remove " + folder_);
        }
        isRemoved_ = true;
    }

  private:
    std::string folder_;
    bool isRemoved_ = false;
};

std::vector<std::string> installerCommand(const InstallOptions& options) {
    const std::string volume = kVolume;
    std::vector<std::string> command{volume + "/" + kInstaller + "/Contents/MacOS/Install Sentrel",
                                     volume + "/Payload", "--timeout", std::to_string(options.timeout)};
    if (options.forceOverinstall) {
        command.emplace_back("--force-overinstall");
    }
    return command;
}

}  // namespace

int installProduct(const InstallOptions& options) {
    std::error_code error;
    const std::string installer = ownBundle(kInstaller);
    if (!fs::is_directory(installer + "/Contents", error)) {
        throw Refusal("there is no installer at " + installer);
    }
    const MacRoot mac(options.folder);
    const BundleVersion version = versionOfPayload(options.payload);
    const Descriptor lock = lockMac(mac);
    InstallerVolume volume(mac);
    volume.fill(options.payload, version);
    RunOptions run;
    run.folder = options.folder;
    run.faults = options.faults;
    run.command = installerCommand(options);
    const int status = runLocked(mac, run);
    volume.remove();
    return status;
}

}  // namespace Simulator
