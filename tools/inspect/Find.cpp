#include "Find.h"

#include <algorithm>

#include "CatalogueReport.h"
#include "CommandKinds.h"
#include "DisplayText.h"
#include "InstallCommon/CommandLists.h"
#include "KnownProduct.h"

namespace Inspect {

namespace {

constexpr int kFindFormat = 1;

bool isBelow(const std::string& path, const std::string& folder) {
    return path.starts_with(folder) && path[folder.size()] == '/';
}

bool isAtOrBelow(const std::string& path, const std::string& folder) {
    return path == folder || isBelow(path, folder);
}

/// Collects the records that name something.
class RecordSearch {
  public:
    RecordSearch(const std::string& what, std::vector<FoundRecord>& found) : what_(what), found_(found) {}

    /// A property of a provider: a record, a list of records, or a plain value.
    void search(const std::string& name, const Json& value) {
        if (value.is_array()) {
            for (std::size_t index = 0; index < value.size(); ++index) {
                searchRecord(name + " " + std::to_string(index + 1), value[index]);
            }
        } else {
            searchRecord(name, value);
        }
    }

  private:
    void searchRecord(const std::string& name, const Json& record) {
        const std::string generation = generationOf(record);
        searchField(name, "", record, generation);
    }

    // Follows the records, which come from the program itself and nest at most four deep.
    void searchField(const std::string& name, const std::string& field, const Json& value,
                     const std::string& generation) {
        if (value.is_object()) {
            for (const auto& [key, member] : value.items()) {
                std::string inner = field.empty() ? "" : field + '.';
                searchField(name, inner.append(key), member, generation);
            }
            return;
        }
        if (!value.is_string()) {
            return;
        }
        const auto& text = value.get_ref<const std::string&>();
        if (text == what_) {
            found_.push_back({name, field, "", generation});
        } else if (text.starts_with('/') && isBelow(what_, text)) {
            found_.push_back({name, field, text, generation});
        }
    }

    /// The generation of the item that a record is about.
    [[nodiscard]] std::string generationOf(const Json& record) const {
        for (const Inventory::KnownItem& item : known_) {
            const bool isAbout = mentions(record, item.path.path());
            for (const Inventory::KnownRecord& meaning : item.records) {
                if (isAbout && isProgram(meaning.role) && !meaning.generation.empty()) {
                    return std::string(meaning.generation);
                }
            }
        }
        return {};
    }

    [[nodiscard]] static bool mentions(const Json& value, const std::string& path) {
        if (value.is_object()) {
            return std::any_of(value.begin(), value.end(),
                               [&path](const Json& member) { return mentions(member, path); });
        }
        return value.is_string() && isAtOrBelow(value.get_ref<const std::string&>(), path);
    }

    const std::string& what_;
    std::vector<FoundRecord>& found_;
    const std::vector<Inventory::KnownItem> known_ = Inventory::knownItems();
};

/// Whether a command touches something.
struct Touches {
    const std::string& what;

    bool operator()(const InstallCommon::RemoveCommand* command) const {
        const auto& items = command->itemsToRemove();
        return std::any_of(items.begin(), items.end(),
                           [this](const auto& item) { return isAtOrBelow(what, item.path.path()); });
    }
    // Both commands of the family.
    bool operator()(const InstallCommon::LaunchdJobCommand* command) const {
        const NorvikCommon::LaunchdInfo& job = command->launchdJob();
        return job.label == what || (job.plistLocation() && job.plistLocation()->path() == what);
    }
    bool operator()(const InstallCommon::KillProcessCommand* command) const {
        return command->process() == what;
    }
    bool operator()(const InstallCommon::UnloadKextCommand* command) const {
        const NorvikCommon::KextInfo& kext = command->kext();
        return kext.ioClassName == what ||
               (kext.bundle && (kext.bundle->bundleId == what ||
                                (kext.bundle->location && isAtOrBelow(what, kext.bundle->location->path()))));
    }
    // An uninstallation has none of these.
    bool operator()(const InstallCommon::CopyCommand* /*command*/) const { return false; }
    bool operator()(const InstallCommon::UpdateLaunchServices* /*command*/) const { return false; }
};

/// The helper that is not in any list: it installs the runtime package.
void searchSupportHelper(RecordSearch& search) {
    const std::string& label = Inventory::uninstallersHelpers().back();
    for (const Inventory::KnownItem& item : Inventory::knownItems()) {
        const std::string& path = item.path.path();
        if (item.path.lastPathComponent().starts_with(label)) {
            search.search("SupportPrivilegedHelper", {{"label", label}, {"location", path}});
        }
    }
}

}  // namespace

FindResult find(const std::string& what) {
    FindResult result{what, {}, {}};
    if (what.empty()) {
        // Some records have an empty identifier.
        return result;
    }
    RecordSearch search(result.what, result.records);
    const Json providers = catalogue();
    for (const auto& [provider, properties] : providers.items()) {
        // The system's own places belong to no product.
        if (provider == "SystemPathProvider") {
            continue;
        }
        for (const auto& [property, value] : properties.items()) {
            search.search(std::string(provider).append(".").append(property), value);
        }
    }
    searchSupportHelper(search);
    result.records.erase(std::unique(result.records.begin(), result.records.end()), result.records.end());
    const InstallCommon::CommandList commands = InstallCommon::CommandLists::uninstallation();
    for (std::size_t index = 0; index < commands.size(); ++index) {
        const CommandKind& kind = kindOf(*commands[index]);
        if (std::visit(Touches{result.what}, kind.narrow(*commands[index]))) {
            result.steps.push_back(
                {index + 1, std::string(kind.className), commands[index]->commandDescription()});
        }
    }
    return result;
}

std::string findText(const FindResult& result) {
    std::string text;
    if (!result.records.empty()) {
        text += "Records\n";
    }
    for (const FoundRecord& found : result.records) {
        appendLine(text, "  " + found.record + (found.field.empty() ? "" : ", " + found.field) +
                             (found.generation.empty() ? "" : ", generation " + found.generation));
        if (!found.inside.empty()) {
            appendLine(text, "    inside " + found.inside);
        }
    }
    text += result.steps.empty() ? "No step of an uninstallation touches it.\n"
                                 : "Steps of an uninstallation that touch it\n";
    for (const FoundStep& step : result.steps) {
        const std::string number = std::to_string(step.number);
        appendLine(text, (number.size() < 2 ? "   " : "  ") + number + "  " +
                             shown(std::string_view(step.description)));
    }
    return text;
}

Json findJson(const FindResult& result) {
    Json records = Json::array();
    for (const FoundRecord& found : result.records) {
        const auto optional = [](const std::string& text) {
            return text.empty() ? Json(nullptr) : Json(text);
        };
        records.push_back({{"record", found.record},
                           {"field", optional(found.field)},
                           {"inside", optional(found.inside)},
                           {"generation", optional(found.generation)}});
    }
    Json steps = Json::array();
    for (const FoundStep& step : result.steps) {
        steps.push_back(
            {{"number", step.number}, {"class", step.className}, {"description", step.description}});
    }
    return {{"formatVersion", kFindFormat},
            {"what", result.what},
            {"records", std::move(records)},
            {"steps", std::move(steps)}};
}

}  // namespace Inspect
