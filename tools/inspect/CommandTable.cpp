#include "CommandTable.h"

#include <algorithm>
#include <vector>

#include "CommandKinds.h"
#include "DisplayText.h"

namespace Inspect {

namespace {

using Lines = std::vector<std::string>;

struct Row {
    std::string number;
    std::string className;
    std::string description;
    Lines operands;
};

std::string shownPath(const Base::URL& url) {
    return shown(std::string_view(url.path()));
}

template <class Item>
std::string shownLocation(const std::optional<Item>& item) {
    return item && item->location ? shownPath(*item->location) : std::string(kNone);
}

/// The operands of a command, one line each.
struct OperandPrinter {
    Lines operator()(const InstallCommon::RemoveCommand* command) const {
        Lines lines;
        for (const auto& item : command->itemsToRemove()) {
            lines.push_back(shownPath(item.path) + (item.removeIfEmpty ? "  (only if empty)" : ""));
        }
        return lines;
    }

    Lines operator()(const InstallCommon::CopyCommand* command) const {
        Lines lines;
        for (const auto& item : command->itemsToCopy()) {
            lines.push_back(shownPath(item.source) + " -> " + shownPath(item.destination));
        }
        return lines;
    }

    // Both commands of the family.
    Lines operator()(const InstallCommon::LaunchdJobCommand* command) const {
        const NorvikCommon::LaunchdInfo& job = command->launchdJob();
        return {(command->isDaemon() ? "daemon " : "agent ") + shown(job.label) + "  " +
                shownLocation(job.plist)};
    }

    Lines operator()(const InstallCommon::KillProcessCommand* command) const {
        return {"process " + shown(std::string_view(command->process()))};
    }

    Lines operator()(const InstallCommon::UnloadKextCommand* command) const {
        const NorvikCommon::KextInfo& kext = command->kext();
        const auto bundleId = kext.bundle ? kext.bundle->bundleId : std::nullopt;
        return {shown(bundleId) + "  (I/O class " + shown(kext.ioClassName) + ')',
                shownLocation(kext.bundle)};
    }

    Lines operator()(const InstallCommon::UpdateLaunchServices* /*command*/) const { return {}; }
};

std::vector<Row> makeRows(const InstallCommon::CommandList& commands) {
    std::vector<Row> rows;
    rows.reserve(commands.size());
    for (const auto& command : commands) {
        const CommandKind& kind = kindOf(*command);
        rows.push_back({std::to_string(rows.size() + 1), std::string(kind.className),
                        shown(std::string_view(command->commandDescription())),
                        std::visit(OperandPrinter(), kind.narrow(*command))});
    }
    return rows;
}

/// Widths of the first three columns, and of the widest operand.
struct Widths {
    std::size_t number;
    std::size_t className;
    std::size_t description;
    std::size_t operands;

    explicit Widths(const Row& header, const std::vector<Row>& rows)
        : number(header.number.size()),
          className(header.className.size()),
          description(header.description.size()),
          operands(header.operands.front().size()) {
        for (const Row& row : rows) {
            number = std::max(number, row.number.size());
            className = std::max(className, row.className.size());
            description = std::max(description, columnsOf(row.description));
            for (const std::string& operand : row.operands) {
                operands = std::max(operands, columnsOf(operand));
            }
        }
    }

    [[nodiscard]] std::size_t total() const {
        constexpr std::size_t kGaps = 6;
        return number + className + description + operands + kGaps;
    }
};

std::string beginning(const Row& row, const Widths& widths) {
    std::string line(widths.number - row.number.size(), ' ');
    appendCell(line, row.number, 0);
    appendCell(line, row.className, widths.className);
    return line;
}

void appendWide(std::string& table, const Row& row, const Widths& widths) {
    std::string line = beginning(row, widths);
    appendCell(line, row.description, widths.description);
    const std::string indent(columnsOf(line), ' ');
    appendLine(table, row.operands.empty() ? line : line + row.operands.front());
    for (std::size_t i = 1; i < row.operands.size(); ++i) {
        appendLine(table, indent + row.operands[i]);
    }
}

void appendFolded(std::string& table, const Row& row, const Widths& widths) {
    constexpr std::size_t kIndent = 4;
    appendLine(table, beginning(row, widths) + row.description);
    for (const std::string& operand : row.operands) {
        appendLine(table, std::string(widths.number + kIndent, ' ') + operand);
    }
}

}  // namespace

std::string commandTable(const InstallCommon::CommandList& commands, std::size_t width) {
    const Row header{"#", "Class", "Description", {"Operands"}};
    const std::vector<Row> rows = makeRows(commands);
    const Widths widths(header, rows);
    const auto append = widths.total() <= width ? &appendWide : &appendFolded;
    std::string table;
    append(table, header, widths);
    for (const Row& row : rows) {
        append(table, row, widths);
    }
    return table;
}

}  // namespace Inspect
