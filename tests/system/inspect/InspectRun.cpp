#include "InspectRun.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <stdexcept>

#include "support/WholeFile.h"

namespace InspectTest {

namespace {

namespace fs = std::filesystem;
using TestSupport::contentsOf;

void redirect(int descriptor, const fs::path& file, int flags) {
    const int opened = ::open(file.c_str(), flags, 0600);
    if (opened < 0 || ::dup2(opened, descriptor) < 0) {
        ::_exit(126);
    }
    ::close(opened);
}

}  // namespace

Inspect::Inspect() {
    ::unsetenv("COLUMNS");
    std::string name = (fs::path(::testing::TempDir()) / "inspect-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) {
        throw std::runtime_error("no scratch folder");
    }
    scratch_ = name;
    folder_ = scratch_ / "folder";
    fs::create_directory(folder_);
}

Inspect::~Inspect() {
    std::error_code ignored;
    fs::remove_all(scratch_, ignored);
}

Outcome Inspect::run(const std::vector<std::string>& command, std::string_view input,
                     const Conditions& conditions) const {
    std::ofstream(scratch_ / "in", std::ios::binary) << input;
    std::vector<char*> words;
    words.reserve(command.size() + 1);
    for (const std::string& word : command) {
        words.push_back(const_cast<char*>(word.c_str()));
    }
    words.push_back(nullptr);
    const fs::path outputFile = conditions.output.empty() ? scratch_ / "out" : fs::path(conditions.output);
    const pid_t child = ::fork();
    if (child == 0) {
        redirect(STDIN_FILENO, scratch_ / "in", O_RDONLY);
        redirect(STDOUT_FILENO, outputFile, O_WRONLY | O_CREAT | O_TRUNC);
        redirect(STDERR_FILENO, scratch_ / "err", O_WRONLY | O_CREAT | O_TRUNC);
        if (conditions.largestFile) {
            const rlimit limit{*conditions.largestFile, *conditions.largestFile};
            ::setrlimit(RLIMIT_FSIZE, &limit);
        }
        if (::chdir(folder_.c_str()) == 0) {
            ::execv(words.front(), words.data());
        }
        ::_exit(127);
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child) {
        throw std::runtime_error("no child process");
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, contentsOf(scratch_ / "out"),
            contentsOf(scratch_ / "err")};
}

Outcome Inspect::inspect(const std::vector<std::string>& arguments, std::string_view input) const {
    std::vector<std::string> command{INSPECT_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, input, {});
}

Outcome Inspect::inspectUnder(const Conditions& conditions, const std::vector<std::string>& arguments) const {
    std::vector<std::string> command{INSPECT_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return run(command, {}, conditions);
}

nlohmann::json Inspect::json(const std::vector<std::string>& arguments, std::string_view input) const {
    const Outcome outcome = inspect(arguments, input);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.errors, "");
    auto document = nlohmann::json::parse(outcome.output, nullptr, false);
    EXPECT_FALSE(document.is_discarded()) << outcome.output;
    return document;
}

std::string Inspect::xmlForm(const std::string& archive) const {
    const Outcome outcome = run({INSPECT_PYTHON, INSPECT_TO_XML}, archive, {});
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    return outcome.output;
}

void Inspect::write(std::string_view name, std::string_view bytes) const {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
}

std::string Inspect::read(std::string_view name) const {
    return contentsOf(folder_ / name);
}

std::vector<std::string> Inspect::entries() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

void expectRefusal(const Outcome& outcome, int status, std::string_view what) {
    EXPECT_EQ(outcome.status, status);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors.rfind("sentrel-inspect: ", 0), 0U) << outcome.errors;
    EXPECT_NE(outcome.errors.find(what), std::string::npos) << outcome.errors;
    EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    EXPECT_TRUE(outcome.errors.ends_with('\n')) << outcome.errors;
}

}  // namespace InspectTest
