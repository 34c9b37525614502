#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "ArchiveBuilder.h"
#include "Base/Archive/Coder.h"
#include "CodingSamples.h"

/// Archives of a command list, each with one thing wrong.
namespace CodingFaultTests {

using namespace CodingSamples;

struct Fault {
    std::string name;
    std::function<Bytes()> archive;
    /// What the carriers' refusal has to speak of.
    std::string complaint;

    friend void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.name; }
};

[[nodiscard]] std::vector<Fault> faults();

/// Gives a command the description that each has to have.
void describe(Base::Coder& coder);

/// An archive of one RemoveCommand with these lists.
[[nodiscard]] Bytes removal(const std::function<ArchiveBuilder::Index(ArchiveBuilder&)>& path,
                            const std::function<ArchiveBuilder::Index(ArchiveBuilder&)>& flag);

}  // namespace CodingFaultTests
