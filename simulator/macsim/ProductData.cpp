#include "macsim/ProductData.h"

#include <algorithm>
#include <random>

#include "NorvikCommon/Product Paths Information/ComponentPathProvider.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "macsim/ProductBundles.h"

namespace Simulator {

using Features = NorvikCommon::FeaturePathProvider;
using ProductPaths = NorvikCommon::ComponentPathProvider;

namespace {

constexpr std::size_t kBlock = 8U << 20U;
constexpr std::size_t kSmallBases = 262144;

/// Bytes that no file system compresses, the same on every run.
std::string randomBlock() {
    std::mt19937_64 random(6401);
    std::string block(kBlock, '\0');
    for (std::size_t offset = 0; offset < kBlock; offset += 8) {
        const std::uint64_t word = random();
        block.replace(offset, 8, reinterpret_cast<const char*>(&word), 8);
    }
    return block;
}

/// `folders` x `files` files of 1 to 19 KB.
void manyFiles(MacBuilder& mac, const std::string& root, int folders, int files, std::string_view block) {
    for (int folder = 0; folder < folders; ++folder) {
        const std::string path = root + "/" + std::to_string(folder);
        for (int file = 0; file < files; ++file) {
            const auto size = static_cast<std::size_t>(1000 + (file * 7919 + folder * 104729) % 18000);
            const auto offset =
                static_cast<std::size_t>((file * 15485863LL + folder * 32452843LL) % (kBlock - 20000));
            mac.file(path + "/" + std::to_string(file) + ".dat", block.substr(offset, size));
        }
    }
}

constexpr int kBlocksOfBases = 19;

void consoleHelp(MacBuilder& mac, std::string_view block) {
    manyFiles(mac, pathOf(ProductPaths::managementConsole().bundle.value().resources()) + "/Help", 100, 120,
              block);
}

void settings(MacBuilder& mac) {
    mac.propertyList(pathOf(Features::settingsPlist().location),
                     {{"RealTimeScanner", true}, {"ScheduleHour", 3}, {"Language", "en"}},
                     PropertyListForm::binary);
}

void realAmount(MacBuilder& mac, bool current) {
    const std::string block = randomBlock();
    const std::string support = ProductPaths::productAppSupport().path();
    if (current) {
        consoleHelp(mac, block);
    }
    manyFiles(mac, support + "/Bases", 70, 100, block);
    manyFiles(mac, Features::quarantineFolder().path(), 10, 50, block);
    for (int part = 0; part < kBlocksOfBases; ++part) {
        mac.file(support + "/Bases/base" + std::to_string(part) + ".nvb", block);
    }
}

void repairCopies(MacBuilder& mac) {
    const std::string repair = Features::repairFolder().path();
    const auto console = ProductPaths::managementConsole();
    const std::string contents = repair + pathOf(console.bundle.value().contents());
    mac.propertyList(contents + "/Info.plist", {{"CFBundleIdentifier", console.bundle->bundleId.value()}},
                     PropertyListForm::binary);
    mac.program("simulated-app", repair + pathOf(console.executable.value().location));
    mac.program("simulated-app", repair + pathOf(ProductPaths::scanner().executable.value().location));
    const auto launchd = ProductPaths::fileAccessDaemon().launchd.value();
    mac.propertyList(repair + pathOf(launchd.plistLocation()), {{"Label", launchd.label.value()}},
                     PropertyListForm::xml);
}

}  // namespace

void buildProductData(MacBuilder& mac, const CreateOptions& options) {
    const std::uint32_t user = options.users.empty() ? 0 : options.users.front().uid;
    const std::string support = ProductPaths::productAppSupport().path();
    mac.folder(support);
    settings(mac);
    mac.file(pathOf(Features::avBases().location), std::string(kSmallBases, 'b'));
    mac.file(Features::quarantineDatabase().path(), std::string(8192, 'q'), {0600});
    mac.file(Features::fileRatingStorage().path(), std::string(16384, 'r'), {0600});
    mac.folder(Features::quarantineFolder().path(), {0700});
    mac.file(Features::quarantineFolder().path() + "/00000001.nvq", std::string(3000, 'x'), {0000});
    mac.link(Features::quarantineFolder().path() + "/latest", "00000001.nvq");
    mac.folder(Features::containmentServiceFolder().path() + "/private", {0700});
    for (const char* name : {"fileaccessd", "containmentd", "scanner"}) {
        mac.file(Features::logDirectory().path() + "/" + name + "." + std::string(Features::logFileExtension),
                 std::string("started\n"));
    }
    repairCopies(mac);
    mac.folder(Features::preferencesFolder().path(), {01777});
    mac.propertyList(Features::preferencesFolder().path() + "/com.norvik.preferences.plist",
                     {{"FirstStart", false}}, PropertyListForm::binary);
    mac.file(Features::preferencesFolder().path() + "/recent.txt", "~/Downloads\n",
             {0600, user, kStaffGroup});
    if (options.realSize) {
        const auto& installed = options.installed;
        realAmount(mac, std::find(installed.begin(), installed.end(), "current") != installed.end());
    }
}

void buildInstallableData(MacBuilder& mac, bool realSize) {
    settings(mac);
    std::string bases(kSmallBases, 'b');
    if (realSize) {
        const std::string block = randomBlock();
        consoleHelp(mac, block);
        bases.clear();
        for (int part = 0; part < kBlocksOfBases; ++part) {
            bases += block;
        }
    }
    mac.file(pathOf(Features::avBases().location), bases);
}

}  // namespace Simulator
