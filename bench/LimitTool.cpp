// The least that a tree can cost: the fewest calls for each item, shared by a number of threads, without any
// of the care that the product takes. Not safe if somebody else can change the tree.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <charconv>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace {

constexpr std::size_t kBatch = 256;

/// An open folder that several batches belong to.
struct Folder {
    explicit Folder(std::string folder)
        : path(std::move(folder)), fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {}
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() { ::close(fd); }

    const std::string path;
    const int fd;
};

/// Files of a folder, or without names the folder itself, which has not been listed.
struct Batch {
    std::shared_ptr<Folder> folder;
    std::vector<std::string> names;
};

struct Change {
    bool removes = false;
    bool looksFirst = false;
    std::uint32_t owner = 0;
    std::uint32_t group = 0;

    void doTo(int folder, const char* name) const {
        struct stat status {};
        if (removes) {
            (void)::unlinkat(folder, name, 0);
        } else if (!looksFirst || ::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
            (void)!::fchownat(folder, name, owner, group, AT_SYMLINK_NOFOLLOW);
        }
    }
};

class Work {
  public:
    Work(const Change& change, const std::string& top) : change_(change) { addFolder(top); }

    void run(unsigned threads) {
        std::vector<std::thread> others;
        while (others.size() + 1 < threads) {
            others.emplace_back([this] { work(); });
        }
        work();
        for (std::thread& each : others) {
            each.join();
        }
        // Each folder was found after the one that it lies in.
        for (auto folder = folders_.rbegin(); change_.removes && folder != folders_.rend(); ++folder) {
            (void)::rmdir(folder->c_str());
        }
    }

  private:
    void work() {
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return !waiting_.empty() || busy_ == 0; });
            if (waiting_.empty()) {
                return;
            }
            const Batch batch = std::move(waiting_.back());
            waiting_.pop_back();
            ++busy_;
            lock.unlock();
            if (batch.names.empty()) {
                list(batch.folder);
            }
            for (const std::string& name : batch.names) {
                change_.doTo(batch.folder->fd, name.c_str());
            }
            lock.lock();
            if (--busy_ == 0) {
                changed_.notify_all();
            }
        }
    }

    void list(const std::shared_ptr<Folder>& folder) {
        DIR* stream = ::fdopendir(::dup(folder->fd));
        std::vector<std::string> names;
        while (const dirent* entry = ::readdir(stream)) {
            const std::string_view name = entry->d_name;
            if (name == "." || name == "..") {
                continue;
            }
            if (entry->d_type == DT_DIR) {
                if (!change_.removes) {
                    change_.doTo(folder->fd, entry->d_name);
                }
                addFolder(folder->path + "/" + entry->d_name);
                continue;
            }
            names.emplace_back(name);
            if (names.size() == kBatch) {
                add(Batch{folder, std::move(names)});
                names.clear();
            }
        }
        ::closedir(stream);
        for (const std::string& name : names) {
            change_.doTo(folder->fd, name.c_str());
        }
    }

    void addFolder(const std::string& path) {
        add(Batch{std::make_shared<Folder>(path), {}});
        const std::lock_guard lock(mutex_);
        folders_.push_back(path);
    }

    void add(Batch batch) {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(batch));
        changed_.notify_one();
    }

    const Change change_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Batch> waiting_;
    std::vector<std::string> folders_;
    std::size_t busy_ = 0;
};

template <class Number>
bool parse(std::string_view text, Number& number) {
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
    return failure == std::errc() && end == text.data() + text.size();
}

}  // namespace

int main(int count, char** arguments) {
    const std::string_view verb = count > 1 ? arguments[1] : "";
    unsigned threads = 0;
    Change change;
    change.removes = verb == "remove";
    change.looksFirst = verb == "look-and-chown";
    const bool changesOwner = change.looksFirst || verb == "chown";
    if (count > 3 && parse(arguments[2], threads) && threads > 0 &&
        ((change.removes && count == 4) || (changesOwner && count == 6 && parse(arguments[3], change.owner) &&
                                            parse(arguments[4], change.group)))) {
        Work(change, arguments[count - 1]).run(threads);
        return 0;
    }
    std::fputs("usage: LimitTool remove THREADS FOLDER | chown|look-and-chown THREADS UID GID FOLDER\n",
               stderr);
    return 2;
}
