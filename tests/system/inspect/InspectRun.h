#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace InspectTest {

/// What a finished program left.
struct Outcome {
    int status = -1;  // exit status; -1 when it did not exit by itself
    std::string output;
    std::string errors;
};

/// What a program is up against.
struct Conditions {
    /// Bytes beyond which no file may grow.
    std::optional<std::uint64_t> largestFile{};
    /// What standard output is, in place of a file of the test's.
    std::string output{};
};

/// A test with a temporary folder.
class Inspect : public ::testing::Test {
  protected:
    Inspect();
    ~Inspect() override;

    /// Runs the program with these arguments, in the folder, with `input` as its standard input. A width in
    /// the environment counts only where a test has set it.
    [[nodiscard]] Outcome inspect(const std::vector<std::string>& arguments,
                                  std::string_view input = {}) const;
    /// The same under other conditions than usual, without input.
    [[nodiscard]] Outcome inspectUnder(const Conditions& conditions,
                                       const std::vector<std::string>& arguments) const;
    /// The output of a run that succeeds without a word of complaint, as JSON.
    [[nodiscard]] nlohmann::json json(const std::vector<std::string>& arguments,
                                      std::string_view input = {}) const;
    /// The XML form of a binary archive.
    [[nodiscard]] std::string xmlForm(const std::string& archive) const;

    [[nodiscard]] std::string path(std::string_view name) const { return (folder_ / name).string(); }
    void write(std::string_view name, std::string_view bytes) const;
    [[nodiscard]] std::string read(std::string_view name) const;
    /// Names of everything in the folder, in order.
    [[nodiscard]] std::vector<std::string> entries() const;

  private:
    [[nodiscard]] Outcome run(const std::vector<std::string>& command, std::string_view input,
                              const Conditions& conditions) const;

    std::filesystem::path scratch_;
    std::filesystem::path folder_;
};

/// Expects a refusal: this exit status, nothing on standard output, one line on standard error that names the
/// program and holds `what`.
void expectRefusal(const Outcome& outcome, int status, std::string_view what);

}  // namespace InspectTest
