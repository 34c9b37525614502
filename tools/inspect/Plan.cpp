#include "Plan.h"

#include <algorithm>
#include <map>
#include <utility>

#include "CommandKinds.h"
#include "InstallCommon/CommandLists.h"
#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "PlaceLook.h"

namespace Inspect {

namespace {

using Platform::ItemIdentity;

/// StopLaunchdJobCommand's pause after a daemon that it has stopped.
constexpr std::uint32_t kPauseAfterDaemon = 5;

/// Fills in the steps one after the other and remembers what they remove.
class Planner {
  public:
    Planner(const PlanFacts& facts, Plan& plan) : facts_(facts), plan_(plan) {}

    void begin(PlanStep& step) { step_ = &step; }

    void operator()(const InstallCommon::RemoveCommand* command) {
        for (const auto& item : command->itemsToRemove()) {
            findItem(item.path);
            findRepairCopy(item.path);
        }
    }

    void operator()(const InstallCommon::StopLaunchdJobCommand* command) {
        const NorvikCommon::LaunchdInfo& job = command->launchdJob();
        step_->isUnknown = !facts_.inventory.root.empty();
        for (const Inventory::RegisteredJob& each : facts_.inventory.jobs) {
            if (each.label != job.label || (each.domain == "system") != command->isDaemon()) {
                continue;
            }
            PlanFinding finding{PlanFinding::Kind::job, each.target()};
            finding.pid = each.pid;
            note(finding, stopped_, finding.name);
            // A job is stopped by its property list.
            if (command->isDaemon() && !finding.goesWithStep && isThere(*job.plistLocation())) {
                step_->pauseSeconds = kPauseAfterDaemon;
            }
        }
    }

    void operator()(const InstallCommon::UnloadKextCommand* command) {
        step_->isUnknown = !facts_.inventory.root.empty();
        const std::string& identifier = *command->kext().bundle->bundleId;
        const auto& loaded = facts_.inventory.extensions;
        if (std::find(loaded.begin(), loaded.end(), identifier) != loaded.end()) {
            PlanFinding finding{PlanFinding::Kind::extension, identifier};
            note(finding, unloaded_, identifier);
        }
    }

    void operator()(const InstallCommon::KillProcessCommand* command) {
        step_->isUnknown = !facts_.inventory.root.empty();
        for (const NorvikCommon::PMProcess& process : facts_.processes) {
            if (process.name != command->process()) {
                continue;
            }
            PlanFinding finding{PlanFinding::Kind::process, process.location.path()};
            finding.pid = process.pid;
            finding.uid = process.uid;
            finding.isOfProduct =
                std::any_of(facts_.inventory.processes.begin(), facts_.inventory.processes.end(),
                            [&process](const auto& each) { return each.pid == process.pid; });
            note(finding, killed_, std::to_string(process.pid));
        }
    }

    // An uninstallation has none of these.
    void operator()(const InstallCommon::CopyCommand* /*command*/) {}
    void operator()(const InstallCommon::StartLaunchdJobCommand* /*command*/) {}
    void operator()(const InstallCommon::UpdateLaunchServices* /*command*/) {}

  private:
    using Steps = std::map<std::string, std::size_t>;

    /// Adds a finding, with the step that removes it already if there is one.
    void note(PlanFinding& finding, Steps& steps, const std::string& key) {
        const auto [earlier, isFirst] = steps.try_emplace(key, step_->number);
        if (!isFirst && earlier->second != step_->number) {
            finding.goesWithStep = earlier->second;
        }
        step_->findings.push_back(finding);
    }

    [[nodiscard]] bool isThere(const Base::URL& item) const {
        Platform::Error ignored;
        return facts_.files.look(item, ignored).has_value();
    }

    void findItem(const Base::URL& item) {
        Platform::Error error;
        if (const auto found = facts_.files.look(item, error)) {
            addItem(item, *found);
        } else if (!Inventory::meansAbsent(error) && !isNamedInInventory(error.description)) {
            plan_.blind.push_back(error.description);
        }
    }

    /// A removal includes the item's repair copy. Only root may look into the folder of copies.
    void findRepairCopy(const Base::URL& item) {
        const Base::URL folder = NorvikCommon::FeaturePathProvider::repairFolder();
        const Base::URL copy = folder.appendingPathComponent(item.path());
        Platform::Error error;
        if (const auto found = facts_.files.look(copy, error)) {
            addItem(copy, *found);
        } else if (!Inventory::meansAbsent(error) && !std::exchange(saidThatCopiesAreClosed_, true)) {
            plan_.blind.push_back("the repair copies in \"" + folder.path() + "\" could not be looked at");
        }
    }

    void addItem(const Base::URL& item, const Platform::ItemFacts& found) {
        PlanFinding finding{PlanFinding::Kind::item, item.path()};
        finding.itemKind = found.kind;
        finding.goesWithStep = stepThatRemoves(item, found.identity);
        if (!finding.goesWithStep) {
            finding.size = facts_.files.measure(item, removedIdentities_, facts_.counted);
            removed_[found.identity] = step_->number;
            removedIdentities_.push_back(found.identity);
        }
        step_->findings.push_back(finding);
    }

    /// The inventory names whatever it could not look at either.
    [[nodiscard]] bool isNamedInInventory(const std::string& error) const {
        const auto& blind = facts_.inventory.blind;
        return std::find(blind.begin(), blind.end(), error) != blind.end();
    }

    /// The step that has removed the item or a folder on the way to it; by identity, because two spellings
    /// may name one item on a disk.
    [[nodiscard]] std::optional<std::size_t> stepThatRemoves(const Base::URL& item,
                                                             const ItemIdentity& identity) const {
        if (const auto itself = removed_.find(identity); itself != removed_.end()) {
            return itself->second;
        }
        for (Base::URL folder = item.deletingLastPathComponent(); folder.path() != "/";
             folder = folder.deletingLastPathComponent()) {
            Platform::Error ignored;
            const auto facts = facts_.files.look(folder, ignored);
            const auto removed = facts ? removed_.find(facts->identity) : removed_.end();
            if (removed != removed_.end()) {
                return removed->second;
            }
        }
        return std::nullopt;
    }

    const PlanFacts& facts_;
    Plan& plan_;
    PlanStep* step_ = nullptr;
    Steps stopped_;
    Steps unloaded_;
    Steps killed_;
    std::map<ItemIdentity, std::size_t> removed_;
    std::vector<ItemIdentity> removedIdentities_;
    bool saidThatCopiesAreClosed_ = false;
};

}  // namespace

bool PlanStep::findsSomething() const {
    return std::any_of(findings.begin(), findings.end(),
                       [](const PlanFinding& finding) { return !finding.goesWithStep; });
}

Platform::TreeSize Plan::sum() const {
    Platform::TreeSize sum;
    for (const PlanStep& step : steps) {
        for (const PlanFinding& finding : step.findings) {
            sum += finding.size;
        }
    }
    return sum;
}

std::uint32_t Plan::pauseSeconds() const {
    std::uint32_t seconds = 0;
    for (const PlanStep& step : steps) {
        seconds += step.pauseSeconds;
    }
    return seconds;
}

Plan makePlan(const PlanFacts& facts) {
    Plan plan;
    plan.inventory = facts.inventory;
    const InstallCommon::CommandList commands = InstallCommon::CommandLists::uninstallation();
    Planner planner(facts, plan);
    for (const auto& command : commands) {
        const CommandKind& kind = kindOf(*command);
        PlanStep step;
        step.number = plan.steps.size() + 1;
        step.className = kind.className;
        step.description = command->commandDescription();
        planner.begin(step);
        std::visit([&planner](const auto* concrete) { planner(concrete); }, kind.narrow(*command));
        plan.steps.push_back(std::move(step));
    }
    return plan;
}

}  // namespace Inspect
