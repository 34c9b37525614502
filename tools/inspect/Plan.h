#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "Inventory.h"
#include "NorvikCommon/PMProcess.h"

namespace Inspect {

/// One thing that a step finds.
struct PlanFinding {
    enum class Kind : std::uint8_t { job, extension, process, item };

    Kind kind = Kind::item;
    /// DOMAIN/LABEL, a bundle identifier, the executable's path, or the item's.
    std::string name;
    /// It exists now, but an earlier step will have removed it.
    std::optional<std::size_t> goesWithStep{};
    /// Of a process, and of a job that runs.
    std::optional<std::int32_t> pid{};
    /// Of a process; its name is the product's, its place may be anywhere.
    std::uint32_t uid = 0;
    bool isOfProduct = true;
    /// Of an item: its kind and contents, less the parts that earlier steps remove.
    Platform::ItemKind itemKind = Platform::ItemKind::file;
    Platform::TreeSize size{};

    friend bool operator==(const PlanFinding&, const PlanFinding&) = default;
};

struct PlanStep {
    std::size_t number = 0;
    std::string className;
    std::string description;
    std::vector<PlanFinding> findings;
    /// Its findings are only in a running Mac, and a folder was looked at.
    bool isUnknown = false;
    /// How long the step waits after its work.
    std::uint32_t pauseSeconds = 0;

    /// Whether it finds something that still exists when its turn comes.
    [[nodiscard]] bool findsSomething() const;
};

struct Plan {
    std::vector<PlanStep> steps;
    Inventory::Inventory inventory;
    /// Additional items that could not be looked at.
    std::vector<std::string> blind;

    [[nodiscard]] Platform::TreeSize sum() const;
    [[nodiscard]] std::uint32_t pauseSeconds() const;
    [[nodiscard]] bool isComplete() const { return inventory.blind.empty() && blind.empty(); }
};

/// The input of a plan.
struct PlanFacts {
    Inventory::Inventory inventory;
    /// All processes; empty for a folder.
    std::vector<NorvikCommon::PMProcess> processes;
    Platform::FileFacts& files;
    /// Called now and then with the count so far.
    std::function<void(const Platform::TreeSize&)> counted;
};

/// The steps of an uninstallation, each with its findings, in order: an item that an earlier step removes is
/// not found a second time, whatever its name there.
[[nodiscard]] Plan makePlan(const PlanFacts& facts);

}  // namespace Inspect
