#include "Platform/Posix/TreeCount.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

#include "Platform/Posix/Descriptor.h"
#include "Platform/Posix/FolderListing.h"

namespace Platform::Posix {

namespace {

constexpr unsigned kMostThreads = 8;
constexpr std::chrono::milliseconds kBetweenReports{100};

bool hasVanished(int error) {
    return error == ENOENT || error == ENOTDIR;
}

/// The folders that wait to be counted, and the sum of those that were.
class Count {
  public:
    Count(const std::vector<ItemIdentity>& without) : without_(without) {}

    /// Counts an item of a folder, or the top one; a folder is put into the queue.
    void addItem(int folder, const char* name, const std::string& path, TreeSize& size,
                 std::vector<std::string>& folders) const {
        struct stat status {};
        if (::fstatat(folder, name, &status, AT_SYMLINK_NOFOLLOW) != 0) {
            size.unread += hasVanished(errno) ? 0 : 1;
            return;
        }
        const ItemFacts facts = factsOf(status);
        if (std::find(without_.begin(), without_.end(), facts.identity) != without_.end()) {
            return;
        }
        switch (facts.kind) {
            case ItemKind::file:
                ++size.files;
                size.bytes += facts.bytes;
                break;
            case ItemKind::folder:
                ++size.folders;
                folders.push_back(path);
                break;
            case ItemKind::link:
                ++size.links;
                break;
            case ItemKind::other:
                ++size.others;
                break;
        }
    }

    /// Adds a folder's count and the folders found in it.
    void take(const TreeSize& size, std::vector<std::string> folders) {
        const std::lock_guard lock(mutex_);
        sum_ += size;
        waiting_.insert(waiting_.end(), std::make_move_iterator(folders.begin()),
                        std::make_move_iterator(folders.end()));
    }

    /// Counts folders until none is left and none is being counted.
    void work() {
        FolderListing listing;
        std::unique_lock lock(mutex_);
        for (;;) {
            changed_.wait(lock, [this] { return !waiting_.empty() || busy_ == 0; });
            if (waiting_.empty()) {
                changed_.notify_all();
                return;
            }
            // The last one first: the queue stays about as long as the tree is deep.
            const std::string folder = std::move(waiting_.back());
            waiting_.pop_back();
            ++busy_;
            lock.unlock();
            countFolder(folder, listing);
            lock.lock();
            --busy_;
            changed_.notify_all();
        }
    }

    /// Waits for the end; reports on this thread.
    void watch(const std::function<void(const TreeSize&)>& counted) {
        std::unique_lock lock(mutex_);
        while (!changed_.wait_for(lock, kBetweenReports, [this] { return waiting_.empty() && busy_ == 0; })) {
            const TreeSize soFar = sum_;
            lock.unlock();
            counted(soFar);
            lock.lock();
        }
    }

    /// Valid when all work is done.
    [[nodiscard]] const TreeSize& sum() const { return sum_; }

  private:
    void countFolder(const std::string& path, FolderListing& listing) {
        TreeSize size;
        std::vector<std::string> folders;
        const Descriptor folder(
            ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK));
        if (!folder) {
            size.unread += hasVanished(errno) ? 0 : 1;
            take(size, {});
            return;
        }
        listing.start(folder.get());
        FolderEntry entry;
        int result = 0;
        while ((result = listing.next(entry)) > 0) {
            addItem(folder.get(), entry.name, path + "/" + entry.name, size, folders);
        }
        size.unread += result < 0 ? 1 : 0;
        take(size, std::move(folders));
    }

    const std::vector<ItemIdentity>& without_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> waiting_;
    std::size_t busy_ = 0;
    TreeSize sum_;
};

}  // namespace

ItemFacts factsOf(const struct stat& status) {
    ItemFacts facts;
    facts.kind = S_ISREG(status.st_mode)   ? ItemKind::file
                 : S_ISDIR(status.st_mode) ? ItemKind::folder
                 : S_ISLNK(status.st_mode) ? ItemKind::link
                                           : ItemKind::other;
    facts.bytes = static_cast<std::uint64_t>(status.st_size);
    facts.identity = {static_cast<std::uint64_t>(status.st_dev), static_cast<std::uint64_t>(status.st_ino)};
    return facts;
}

TreeSize countTree(const std::string& item, const std::vector<ItemIdentity>& without,
                   const std::function<void(const TreeSize&)>& counted) {
    Count count(without);
    TreeSize top;
    std::vector<std::string> folders;
    count.addItem(AT_FDCWD, item.c_str(), item, top, folders);
    count.take(top, std::move(folders));
    std::vector<std::thread> threads;
    const unsigned wanted = std::clamp(std::thread::hardware_concurrency(), 1U, kMostThreads);
    try {
        while (threads.size() < wanted) {
            threads.emplace_back([&count] { count.work(); });
        }
    } catch (const std::system_error&) {
        // The threads that could be started do the work, or this one.
    }
    if (threads.empty()) {
        count.work();
    }
    count.watch(counted);
    for (std::thread& thread : threads) {
        thread.join();
    }
    return count.sum();
}

}  // namespace Platform::Posix
