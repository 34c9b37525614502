#include "support/FakeHelper.h"

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "support/CommandText.h"

namespace TestSupport {

void FakeHelper::serve(FakeMac& mac) {
    mac.xpc.services["com.norvik.InstallerHelper"] =
        [this](std::string_view, std::vector<Platform::XPCValue> arguments, const Platform::XPCReply&) {
            execute(std::move(arguments));
        };
    mac.xpc.services["com.norvik.SupportPrivilegedHelper"] =
        [this](std::string_view, std::vector<Platform::XPCValue> arguments, const Platform::XPCReply& reply) {
            packages.push_back(std::get<Base::URL>(arguments.at(0)).path());
            reply(packageError);
        };
}

void FakeHelper::execute(std::vector<Platform::XPCValue> arguments) {
    const auto commands =
        InstallCommon::commandList(std::move(std::get<Base::CodedObjectList>(arguments.at(0))));
    const auto delegate = std::get<std::shared_ptr<Platform::XPCObject>>(arguments.at(1));
    lists.push_back(commandTexts(*commands));
    for (std::size_t i = 0; i < std::min(commands->size(), reportsAtMost); ++i) {
        std::vector<Platform::XPCValue> report;
        report.emplace_back((*commands)[i]->commandDescription());
        report.emplace_back((*commands)[i]->weight());
        delegate->message("commandExecutingDidExecuteCommand:withWeight:", std::move(report), {});
    }
}

}  // namespace TestSupport
