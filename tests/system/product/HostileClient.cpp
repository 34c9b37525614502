// A program with the uninstaller's identity that blesses the installer helper and sends it what it should
// not:
//   hostile_client unlisted   a removal of /tmp/victim and an instance of an abstract base
//   hostile_client record     a removal of /tmp/victim and a record, which is no command
//   hostile_client good       a removal of /tmp/target; prints the report
//   hostile_client forged     a removal of an item whose name has a line break and a line of the log in it
// Prints what became of the connection.

#include <iostream>
#include <memory>
#include <semaphore>
#include <string>

#include "InstallCommon/Commands/Uninstallation/RemoveCommand.h"
#include "InstallCommon/IntallHelper.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "NorvikCommon/AuthorizationUtils.h"
#include "NorvikCommon/PrivilegedHelperUtils.h"
#include "NorvikCommon/Product Paths Information/ProductComponents.h"
#include "Platform/SystemPorts.h"

namespace {

class PrintingObject final : public Platform::XPCObject {
  public:
    explicit PrintingObject(std::binary_semaphore& done) : done_(done) {}
    [[nodiscard]] std::string_view protocolName() const override { return "CommandExecutingDelegate"; }
    void message(std::string_view /*selector*/, std::vector<Platform::XPCValue> arguments,
                 Platform::XPCReply /*reply*/) override {
        std::cout << "reported " << std::get<std::string>(arguments.at(0)) << std::endl;
        done_.release();
    }

  private:
    std::binary_semaphore& done_;
};

Base::CodedObjectList list(const std::string& kind) {
    using InstallCommon::RemoveCommand;
    const std::string forged = "/tmp/a\n[SNTM Installer] Uninstallation finished.";
    const std::string path = kind == "good" ? "/tmp/target" : kind == "forged" ? forged : "/tmp/victim";
    Base::CodedObjectList objects;
    objects.push_back(std::make_unique<RemoveCommand>("Deleting", Base::URL::fileURL(path)));
    if (kind == "unlisted") {
        objects.push_back(std::make_unique<InstallCommon::CommandConcrete>("base"));
    } else if (kind == "record") {
        objects.push_back(
            std::make_unique<Base::CodedRecord<NorvikCommon::KextInfo>>(NorvikCommon::KextInfo()));
    }
    return objects;
}

}  // namespace

int main(int argc, char* argv[]) {
    const std::string kind = argc > 1 ? argv[1] : "good";
    const Platform::SystemPorts& ports = Platform::createSystemPorts();
    Platform::SystemPorts::setCurrent(&ports);
    const std::string service(InstallCommon::InstallHelper::machServiceName);
    const auto authorization = NorvikCommon::AuthorizationUtils::authorizationForRootAction(false);
    if (authorization == nullptr || !NorvikCommon::BlessHelperWithLabel(service, *authorization)) {
        std::cerr << "not blessed" << std::endl;
        return 1;
    }
    static std::binary_semaphore done{0};
    const auto connection = ports.xpc->makeConnection(service, Platform::kXPCConnectionPrivileged);
    connection->setRemoteObjectInterface(InstallCommon::CreateCommandExecutingXPCInterface());
    connection->setInvalidationHandler([] {
        std::cout << "invalidated" << std::endl;
        done.release();
    });
    connection->resume();
    std::vector<Platform::XPCValue> arguments;
    arguments.emplace_back(list(kind));
    arguments.emplace_back(std::shared_ptr<Platform::XPCObject>(std::make_shared<PrintingObject>(done)));
    connection->remoteObjectProxy()->message("executeWithCommands:delegate:", std::move(arguments), {});
    done.acquire();
    return 0;
}
