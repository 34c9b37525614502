// Races by the thousand: one thread exchanges a folder and a link to a victim as fast as it can while the
// file manager works on the tree that the folder belongs to, or whose way leads through it.
//
//   swap-race removal|ownership|copy|way ROUNDS [FOLDER]
//
// Prints the rounds, the exchanges and the losses (rounds after which the victim is not what it was). Exit
// status 1 on any loss, 2 on misuse. Works in a scratch folder of its own in FOLDER (default: /dev/shm), as
// root to have owners that can change.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <thread>

#include "Platform/Posix/FolderCrew.h"
#include "Platform/Posix/PosixFileManager.h"
#include "support/WholeFile.h"

namespace Platform::Posix {

// Takes the place of the product's: half of the trees are worked on by four threads from their first entry
// on, whatever the number of trees in a round.
CrewShape crewShape() {
    static std::atomic<std::uint32_t> trees = 0;
    constexpr std::uint32_t kScatter = 2654435761U;
    return (++trees * kScatter >> 31U) == 0 ? CrewShape{2, 512} : CrewShape{4, 0};
}

}  // namespace Platform::Posix

namespace {

using Base::URL;
using Platform::Posix::PosixFileManager;

constexpr int kFolders = 8;
constexpr uid_t kVictim = 1111;
constexpr uid_t kOther = 2222;

URL url(const std::string& path) {
    return URL::fileURL(path);
}

void makeFile(const std::string& path) {
    std::ofstream(path) << path.substr(path.rfind('/'));
}

void makeTree(const std::string& top) {
    ::mkdir(top.c_str(), 0700);
    for (int number = 0; number < kFolders; ++number) {
        const std::string folder = top + "/folder " + std::to_string(number);
        ::mkdir(folder.c_str(), 0700);
        makeFile(folder + "/item");
    }
}

/// Goes on exchanging two items until it is destroyed; begins before the constructor returns.
class Swapper {
  public:
    Swapper(std::string folder, std::string link)
        : thread_([this, folder = std::move(folder), link = std::move(link)] {
              while (!ended_) {
                  const bool done =
                      ::renameat2(AT_FDCWD, folder.c_str(), AT_FDCWD, link.c_str(), RENAME_EXCHANGE) == 0;
                  swaps_ += done ? 1 : 0;
              }
          }) {
        while (swaps_ == 0) {
            std::this_thread::yield();
        }
    }
    Swapper(const Swapper&) = delete;
    Swapper& operator=(const Swapper&) = delete;
    ~Swapper() {
        ended_ = true;
        thread_.join();
    }
    [[nodiscard]] long swaps() const { return swaps_; }

  private:
    std::atomic<bool> ended_ = false;
    std::atomic<long> swaps_ = 0;
    std::thread thread_;
};

/// What must not change: names, owners, modes and contents.
using State = std::map<std::string, std::string>;

void readState(const std::string& path, State& state) {
    struct stat status {};
    if (::lstat(path.c_str(), &status) != 0) {
        return;
    }
    const std::string contents = S_ISREG(status.st_mode) ? TestSupport::contentsOf(path) : "";
    state[path] = std::to_string(status.st_uid) + " " + std::to_string(status.st_gid) + " " +
                  std::to_string(status.st_mode) + " " + contents;
    if (!S_ISDIR(status.st_mode)) {
        return;
    }
    DIR* folder = ::opendir(path.c_str());
    while (const dirent* entry = folder != nullptr ? ::readdir(folder) : nullptr) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..") {
            std::string below = path;
            below.append("/").append(name);
            readState(below, state);
        }
    }
    ::closedir(folder);
}

class Race {
  public:
    explicit Race(std::string scratch) : scratch_(std::move(scratch)) {
        ::mkdir(path("victim").c_str(), 0700);
        makeTree(path("victim/folder 3"));
        makeFile(path("victim/item"));
        const auto ignore = [](const URL&, int) {};
        files_.setOwnerOfContents(url(scratch_), kVictim, kVictim, ignore);
        readState(path("victim"), before_);
    }

    void run(const std::string& what, long rounds);
    [[nodiscard]] long swaps() const { return swaps_; }
    [[nodiscard]] long losses() const { return losses_; }

  private:
    [[nodiscard]] std::string path(std::string_view name) const { return scratch_ + "/" + std::string(name); }
    void prepare();
    void work(const std::string& what, long round);
    void clear();

    PosixFileManager files_;
    const std::string scratch_;
    State before_;
    long swaps_ = 0;
    long losses_ = 0;
};

void Race::prepare() {
    makeTree(path("top"));
    makeFile(path("source"));
    // The tree's folder is reached below it, the way's above it.
    (void)::symlink(path("victim").c_str(), path("link").c_str());
}

void Race::work(const std::string& what, long round) {
    const auto ignore = [](const URL&, int) {};
    if (what == "removal") {
        (void)files_.removeItem(url(path("top")));
    } else if (what == "ownership") {
        files_.setOwnerOfContents(url(path("top")), kOther, kOther, ignore);
    } else if (what == "copy") {
        (void)files_.copyItem(url(path("top")), url(path("copy")));
        // Nothing of the victim's may have been read into a real folder of the copy.
        struct stat status {};
        losses_ += ::lstat(path("copy/folder 3/folder 3").c_str(), &status) == 0 &&
                           ::lstat(path("copy/folder 3").c_str(), &status) == 0 && S_ISDIR(status.st_mode)
                       ? 1
                       : 0;
    } else {
        const URL item = url(path("top/folder 3/item"));
        const std::array<std::function<void()>, 6> operations = {
            [&] { (void)files_.removeItem(item); },
            [&] { (void)files_.setOwner(item, kOther, kOther); },
            [&] { (void)files_.setMode(item, 0777); },
            [&] { (void)files_.createDirectory(url(path("top/folder 3/new/deep")), true); },
            [&] { (void)files_.copyItem(url(path("source")), url(path("top/folder 3/copy"))); },
            [&] { files_.setOwnerOfContents(url(path("top/folder 3/folder 3")), kOther, kOther, ignore); },
        };
        operations[static_cast<std::size_t>(round) % operations.size()]();
    }
}

void Race::clear() {
    for (const char* each : {"top", "link", "copy", "source"}) {
        struct stat status {};
        if (::lstat(path(each).c_str(), &status) == 0 && files_.removeItem(url(path(each)))) {
            ++losses_;
        }
    }
}

void Race::run(const std::string& what, long rounds) {
    for (long round = 0; round < rounds; ++round) {
        prepare();
        {
            const Swapper swapper(path("top/folder 3"), path("link"));
            work(what, round);
            swaps_ += swapper.swaps();
        }
        State after;
        readState(path("victim"), after);
        losses_ += after == before_ ? 0 : 1;
        clear();
    }
}

int misuse() {
    std::fputs("usage: swap-race removal|ownership|copy|way ROUNDS [FOLDER]\n", stderr);
    return 2;
}

}  // namespace

int main(int count, char** arguments) {
    const std::string what = count > 1 ? arguments[1] : "";
    const long rounds = count > 2 ? std::strtol(arguments[2], nullptr, 10) : 0;
    if ((what != "removal" && what != "ownership" && what != "copy" && what != "way") || rounds < 1) {
        return misuse();
    }
    std::string scratch = std::string(count > 3 ? arguments[3] : "/dev/shm") + "/swap-race-XXXXXX";
    if (::mkdtemp(scratch.data()) == nullptr) {
        std::perror(scratch.c_str());
        return 2;
    }
    Race race(scratch);
    race.run(what, rounds);
    (void)PosixFileManager().removeItem(url(scratch));
    std::printf("%s: %ld rounds, %ld swaps, %ld losses\n", what.c_str(), rounds, race.swaps(), race.losses());
    return race.losses() == 0 ? 0 : 1;
}
