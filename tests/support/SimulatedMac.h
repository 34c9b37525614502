#pragma once

#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "support/RunProgram.h"

namespace TestSupport {

/// A simulated Mac in a new scratch folder, removed with everything in it at the end.
///
/// Operations report what macsim did; nothing is asserted here. Readers return empty values if there is
/// nothing to read.
class SimulatedMac {
  public:
    SimulatedMac();
    SimulatedMac(const SimulatedMac&) = delete;
    SimulatedMac& operator=(const SimulatedMac&) = delete;
    ~SimulatedMac();

    /// macsim create, with its options.
    ProgramResult create(const std::vector<std::string>& options = {});

    /// macsim run: boots, runs `command`, shuts down. Each fault is NAME or NAME=VALUE.
    ProgramResult run(const std::vector<std::string>& faults, const std::vector<std::string>& command,
                      const std::string& user = "root");
    /// The same for a line of shell, without faults.
    ProgramResult shell(const std::string& line, const std::string& user = "root");

    /// Lines of shell that start a copy of sleep for 1,000 seconds as process $p, and go on when it is what
    /// that process runs: until then, the process is still a shell. `program` is a word of shell.
    [[nodiscard]] static std::string startOf(const std::string& program);

    /// The system log of all runs, line by line.
    [[nodiscard]] std::vector<std::string> log() const;
    /// The texts that `program` logged, without time and process id; a text with line breaks is one element.
    [[nodiscard]] std::vector<std::string> messages(const std::string& program) const;
    /// The state at the end of the last run.
    [[nodiscard]] nlohmann::json state() const;
    /// Labels of the jobs that were registered in a domain ("system", "gui/501") at the end of the last run.
    [[nodiscard]] std::vector<std::string> jobs(const std::string& domain) const;
    /// Names of the processes that ran at the end of the last run.
    [[nodiscard]] std::vector<std::string> processes() const;

    /// Where an item of the Mac is on the host.
    [[nodiscard]] std::string path(const std::string& macPath = "") const { return folder_ + macPath; }
    /// A file's contents; empty when it cannot be read.
    [[nodiscard]] std::string contents(const std::string& macPath) const;
    [[nodiscard]] bool exists(const std::string& macPath) const;
    /// Puts a file (and missing parents) into the Mac.
    void put(const std::string& macPath, const std::string& bytes, unsigned mode = 0644) const;
    void putCopy(const std::string& macPath, const std::string& hostFile, unsigned mode = 0755) const;

    /// Where macsim is.
    [[nodiscard]] static std::string macsim();
    /// The folder that holds the Mac's own, for what a test needs beside it.
    [[nodiscard]] const std::string& scratch() const { return scratch_; }

  private:
    std::string scratch_;
    std::string folder_;
};

}  // namespace TestSupport
