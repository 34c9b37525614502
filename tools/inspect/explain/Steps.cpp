#include "inspect/explain/Steps.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <utility>
#include <variant>

#include "NorvikCommon/Product Paths Information/FeaturePathProvider.h"
#include "inspect/CommandKinds.h"
#include "inspect/explain/Codes.h"

namespace Inspect {

namespace {

constexpr std::string_view kPrefix = "[SNTM Installer] ";
constexpr std::string_view kSupport = "Send the report to support.";

/// The rest of `text` after `start`; nothing if it does not start so.
std::optional<std::string_view> after(std::string_view start, std::string_view text) {
    return text.starts_with(start) ? std::optional(text.substr(start.size())) : std::nullopt;
}

std::optional<std::int32_t> number(std::string_view text) {
    std::int32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc() && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

std::string trimmed(std::string_view text) {
    text = text.substr(0, text.find_last_not_of("\n ") + 1);
    std::string line(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

/// A child process's words on standard error, and its exit status.
struct ToolWords {
    std::string words;
    std::int32_t status = 0;
};

std::optional<ToolWords> toolWords(std::string_view text) {
    constexpr std::string_view kStatus = ";\ntermination status: ";
    const auto rest = after("[SNTM Installer]\nError description: ", text);
    const std::size_t end = rest ? rest->rfind(kStatus) : std::string_view::npos;
    if (end == std::string_view::npos) {
        return std::nullopt;
    }
    const std::string_view status = rest->substr(end + kStatus.size());
    return ToolWords{trimmed(rest->substr(0, end)), number(status.substr(0, status.find(';'))).value_or(-1)};
}

/// Fills in the meaning of launchctl's exit status.
void explainStatus(const ToolWords& tool, StepDetail& detail) {
    const std::optional<CodeMeaning> code = launchctlStatus(tool.status);
    detail.outcome = code && code->isNormal ? StepOutcome::notThere : StepOutcome::failed;
    detail.reason = (code ? std::string(code->meaning) : "launchctl failed") + " (" +
                    tool.words.substr(0, Step::kLongestText) + ")";
    detail.advice = code ? code->advice : kSupport;
}

class StopDaemonStep final : public Step {
  public:
    explicit StopDaemonStep(std::string label) : label_(std::move(label)) {}

    bool take(std::string_view text) override {
        if (isComplete()) {
            return false;
        }
        const std::optional<ToolWords> tool = toolWords(text);
        if (last() == nullptr) {
            const bool registered = text.starts_with(std::string(kPrefix) + "Output: ") &&
                                    text.find(label_ + " = {") != std::string_view::npos;
            if (!registered && !(tool && tool->words.find('"' + label_ + '"') != std::string::npos)) {
                return false;
            }
            isAbsent_ = !registered;
            add({registered ? StepOutcome::done : StepOutcome::notThere, "system/" + label_,
                 registered ? "" : "the job is not loaded", ""});
            return true;
        }
        // "Could not find service" is the answer to the next job's question.
        if (!tool || tool->words.find("Could not find service") != std::string::npos) {
            return false;
        }
        hasFailed_ = true;
        explainStatus(*tool, *last());
        return true;
    }

    bool isComplete() const override { return isAbsent_ || hasFailed_; }
    StepOutcome outcomeOfSilence() const override { return StepOutcome::unknown; }
    bool pauses() const override { return !details().empty() && !isComplete(); }

  private:
    std::string label_;
    bool isAbsent_ = false;
    bool hasFailed_ = false;
};

class StopAgentStep final : public Step {
  public:
    explicit StopAgentStep(std::string label) : label_(std::move(label)) {}

    // The pass for user 0 comes first, once.
    bool take(std::string_view text) override {
        if (const auto user =
                after(std::string(kPrefix) + "Disable & bootout agent " + label_ + " for ", text)) {
            if ((*user == "0") != details().empty()) {
                return false;
            }
            add({StepOutcome::done, "gui/" + std::string(*user) + '/' + label_, "", ""});
            return true;
        }
        const std::optional<ToolWords> tool = toolWords(text);
        if (!tool || last() == nullptr || !last()->reason.empty()) {
            return false;
        }
        explainStatus(*tool, *last());
        return true;
    }

    bool isComplete() const override { return false; }
    StepOutcome outcomeOfSilence() const override { return StepOutcome::unknown; }

  private:
    std::string label_;
};

class UnloadStep final : public Step {
  public:
    explicit UnloadStep(std::string name) : name_(std::move(name)) {}

    bool take(std::string_view text) override {
        const auto code =
            after(std::string(kPrefix) + "Kext " + name_ + " unload failed. Return code: ", text);
        if (!code || isComplete()) {
            return false;
        }
        const std::optional<CodeMeaning> meaning = kextCode(*code);
        const bool normal = meaning && meaning->isNormal;
        add({normal ? StepOutcome::notThere : StepOutcome::failed, name_,
             (meaning ? std::string(meaning->meaning) : "unknown reason") + " (" + std::string(*code) + ")",
             std::string(meaning ? meaning->advice : kSupport)});
        return true;
    }

    bool isComplete() const override { return !details().empty(); }
    // Success is silent.
    StepOutcome outcomeOfSilence() const override { return StepOutcome::done; }

  private:
    std::string name_;
};

class CloseStep final : public Step {
  public:
    explicit CloseStep(std::string process) : process_(std::move(process)) {}

    bool take(std::string_view text) override {
        if (const auto result = after(std::string(kPrefix) + "Kill result for pid ", text)) {
            const bool killed = result->ends_with(": 0");
            add({killed ? StepOutcome::done : StepOutcome::failed,
                 "process " + std::string(result->substr(0, result->find(':'))),
                 killed ? "" : "it could not be ended, or had gone already",
                 killed ? "" : "Check whether it still runs; restart the Mac if it does."});
            return true;
        }
        return last() != nullptr && last()->outcome == StepOutcome::failed &&
               text.starts_with(std::string(kPrefix) + "Failed to kill process ");
    }

    bool isComplete() const override { return false; }
    StepOutcome outcomeOfSilence() const override { return StepOutcome::notThere; }

  private:
    std::string process_;
};

class RemoveStep final : public Step {
  public:
    explicit RemoveStep(const InstallCommon::RemoveCommand& command) {
        const Base::URL repair = NorvikCommon::FeaturePathProvider::repairFolder();
        for (const auto& item : command.itemsToRemove()) {
            expected_.push_back(item.path.path());
            expected_.push_back(repair.appendingPathComponent(item.path.path()).path());
        }
    }

    bool take(std::string_view text) override {
        if (const auto removed = after(std::string(kPrefix) + "Removed at ", text)) {
            return takeAs(*removed, {StepOutcome::done, std::string(*removed), "", ""});
        }
        constexpr std::string_view kCouldNot = "\" could not be removed: ";
        const auto failure = after(std::string(kPrefix) + "Error removing: \"", text);
        const std::size_t end = failure ? failure->find(kCouldNot) : std::string_view::npos;
        if (end == std::string_view::npos) {
            return false;
        }
        const std::string_view path = failure->substr(0, end);
        const std::string_view reason = failure->substr(end + kCouldNot.size());
        const bool absent = reason == "No such file or directory";
        return takeAs(path, {absent ? StepOutcome::notThere : StepOutcome::failed, std::string(path),
                             std::string(reason), absent ? "" : adviceFor(reason)});
    }

    bool isComplete() const override { return expected_.empty(); }
    StepOutcome outcomeOfSilence() const override { return StepOutcome::unknown; }

  private:
    // A failure names the item that resisted, which may lie inside.
    bool takeAs(std::string_view path, StepDetail detail) {
        auto found = std::find(expected_.begin(), expected_.end(), path);
        if (found == expected_.end() && detail.outcome == StepOutcome::failed) {
            found = std::find_if(expected_.begin(), expected_.end(),
                                 [path](const std::string& item) { return path.starts_with(item + '/'); });
        }
        if (found == expected_.end()) {
            return false;
        }
        expected_.erase(found);
        add(std::move(detail));
        return true;
    }

    static std::string adviceFor(std::string_view reason) {
        if (reason == "Operation not permitted") {
            return "Take the immutable flag off (chflags -R nouchg,noschg PATH) or give the helper Full Disk "
                   "Access, then run the uninstaller again.";
        }
        if (reason == "Read-only file system") {
            return "Make the disk writable, then run the uninstaller again.";
        }
        return "Look at that path, then run the uninstaller again.";
    }

    std::vector<std::string> expected_;
};

struct StepMaker {
    std::unique_ptr<Step> operator()(const InstallCommon::RemoveCommand* command) const {
        return std::make_unique<RemoveStep>(*command);
    }
    std::unique_ptr<Step> operator()(const InstallCommon::StopLaunchdJobCommand* command) const {
        const std::string label = command->launchdJob().label.value_or("");
        if (command->isDaemon()) {
            return std::make_unique<StopDaemonStep>(label);
        }
        return std::make_unique<StopAgentStep>(label);
    }
    std::unique_ptr<Step> operator()(const InstallCommon::KillProcessCommand* command) const {
        return std::make_unique<CloseStep>(command->process());
    }
    std::unique_ptr<Step> operator()(const InstallCommon::UnloadKextCommand* command) const {
        const auto& bundle = command->kext().bundle;
        return std::make_unique<UnloadStep>(bundle ? bundle->name.value_or("") : "");
    }
    std::unique_ptr<Step> operator()(const InstallCommon::Command* /*installing*/) const { return nullptr; }
};

}  // namespace

// The last one may still become something else; what it is in the end shows when the next one comes.
void Step::add(StepDetail detail) {
    const auto isLikeTheLast = [this](const StepDetail& each) {
        return each.outcome == details_.back().outcome;
    };
    if (details_.size() > kMostAlike &&
        std::cmp_greater(std::count_if(details_.begin(), details_.end(), isLikeTheLast), kMostAlike)) {
        details_.pop_back();
        ++leftOut_;
    }
    for (std::string* text : {&detail.subject, &detail.reason}) {
        text->resize(std::min(text->size(), kLongestText));
    }
    details_.push_back(std::move(detail));
}

std::unique_ptr<Step> makeStep(const InstallCommon::Command& command) {
    return std::visit(StepMaker(), kindOf(command).narrow(command));
}

StepOutcome combinedOutcome(const std::vector<StepDetail>& details) {
    for (const StepOutcome outcome : {StepOutcome::failed, StepOutcome::done, StepOutcome::notThere}) {
        if (std::any_of(details.begin(), details.end(),
                        [outcome](const StepDetail& detail) { return detail.outcome == outcome; })) {
            return outcome;
        }
    }
    return StepOutcome::unknown;
}

}  // namespace Inspect
