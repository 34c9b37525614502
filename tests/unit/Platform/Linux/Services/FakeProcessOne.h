#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "Platform/Linux/Services/MacServices.h"
#include "Platform/Posix/Descriptor.h"

namespace XPCTests {

/// A folder that is removed, with its direct contents, when the test is over.
class ScratchFolder {
  public:
    ScratchFolder();
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;
    ~ScratchFolder();

    [[nodiscard]] const std::string& path() const { return path_; }

  private:
    std::string path_;
};

/// The services of process 1, played by a thread that answers on a socket in a scratch folder.
class FakeProcessOne {
  public:
    using Fields = std::vector<std::string>;
    /// The reply's packet; nothing closes the connection without an answer. Runs on the server's thread.
    using Answer = std::function<std::optional<std::string>(const std::string& packet)>;

    /// `name` is the socket's, in the scratch folder.
    explicit FakeProcessOne(Answer answer, const std::string& name = "services");
    /// Gives the same reply to every request.
    explicit FakeProcessOne(const Fields& reply);
    FakeProcessOne(const FakeProcessOne&) = delete;
    FakeProcessOne& operator=(const FakeProcessOne&) = delete;
    ~FakeProcessOne();

    [[nodiscard]] Platform::Linux::MacServices services() const {
        return Platform::Linux::MacServices(path_);
    }
    [[nodiscard]] const std::string& socketPath() const { return path_; }
    /// From the next request on.
    void answerWith(const Fields& reply);
    /// The requests so far, as packets and as fields.
    [[nodiscard]] std::vector<std::string> packets() const;
    [[nodiscard]] std::vector<Fields> requests() const;

  private:
    void serve();
    void serveOne(int connection);

    ScratchFolder folder_;
    std::string path_;
    mutable std::mutex mutex_;
    Answer answer_;
    std::vector<std::string> packets_;
    Platform::Posix::Descriptor socket_;
    std::thread thread_;
};

/// Fields as they travel: joined by NUL bytes.
[[nodiscard]] std::string packetOf(const FakeProcessOne::Fields& fields);

/// A stream socket that listens at `path`.
[[nodiscard]] Platform::Posix::Descriptor listeningSocket(const std::string& path, int type);

}  // namespace XPCTests
