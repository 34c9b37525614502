#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Platform/XPC.h"

/// Doubles of the system's connection and interface classes, which GNUstep declares and does not implement:
/// they record their calls.
namespace SystemDoubles {

/// What an NSXPCInterface was told about one argument, and that argument's own interface.
struct InterfaceRecord {
    std::string protocolName;
    struct Argument {
        std::string selector;
        unsigned index;
        bool ofReply;
        /// Sorted; empty when the argument has an interface instead.
        std::vector<std::string> classes;
        std::vector<InterfaceRecord> interface;
    };
    std::vector<Argument> arguments;
};
[[nodiscard]] InterfaceRecord recordOf(const Platform::XPCInterface& interface);

/// A listener's connection over a double of the system's.
class Connection {
  public:
    explicit Connection(std::shared_ptr<void> inUse);
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    ~Connection();

    /// The program's side. Dropped by `drop`.
    std::shared_ptr<Platform::XPCConnection> port;
    void drop() { port.reset(); }

    /// What the system does to its connection.
    void invalidate() const;
    void interrupt() const;

    [[nodiscard]] int resumed() const;
    [[nodiscard]] int invalidated() const;

  private:
    void* double_;
};

/// A client's connection over a double of the system's.
[[nodiscard]] std::shared_ptr<Platform::XPCConnection> makeClient();

/// A reply over a block that leaves something behind when it is called and when it goes.
[[nodiscard]] Platform::XPCReply makeReply();

}  // namespace SystemDoubles
