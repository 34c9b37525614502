#include "CommandJson.h"

#include "CommandKinds.h"

namespace Inspect {

namespace {

/// Adds a class's own fields to a command's object.
class FieldPrinter {
  public:
    explicit FieldPrinter(Json& object) : object_(object) {}

    void operator()(const InstallCommon::RemoveCommand* command) const {
        Json items = Json::array();
        for (const auto& item : command->itemsToRemove()) {
            items.push_back(Json{{"path", toJson(item.path)}, {"removeIfEmpty", item.removeIfEmpty}});
        }
        object_["items"] = std::move(items);
    }

    void operator()(const InstallCommon::CopyCommand* command) const {
        Json items = Json::array();
        for (const auto& item : command->itemsToCopy()) {
            items.push_back(Json{{"source", toJson(item.source)}, {"destination", toJson(item.destination)}});
        }
        object_["items"] = std::move(items);
    }

    // Both commands of the family.
    void operator()(const InstallCommon::LaunchdJobCommand* command) const {
        object_["launchdJob"] = toJson(command->launchdJob());
        object_["isDaemon"] = command->isDaemon();
    }

    void operator()(const InstallCommon::KillProcessCommand* command) const {
        object_["process"] = toJson(command->process());
    }

    void operator()(const InstallCommon::UnloadKextCommand* command) const {
        object_["kext"] = toJson(command->kext());
    }

    void operator()(const InstallCommon::UpdateLaunchServices* /*command*/) const {}

  private:
    Json& object_;
};

}  // namespace

Json toJson(const InstallCommon::CommandList& commands) {
    Json list = Json::array();
    for (const auto& command : commands) {
        const CommandKind& kind = kindOf(*command);
        Json object = Json::object();
        object["number"] = list.size() + 1;
        object["class"] = kind.className;
        object["runtimeName"] = kind.codedClass().runtimeName;
        object["description"] = toJson(command->commandDescription());
        object["weight"] = command->weight();
        std::visit(FieldPrinter(object), kind.narrow(*command));
        list.push_back(std::move(object));
    }
    return list;
}

}  // namespace Inspect
