#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Simulator {

/// What to say about the first word that a command line has and nobody expected, with what was probably
/// meant; `otherwise` when every word was expected.
[[nodiscard]] std::string unexpectedWord(const CLI::App& app, const std::string& otherwise);

/// For the help: every fault, and every generation of the product.
[[nodiscard]] std::string faultList();
[[nodiscard]] std::string generationList();

}  // namespace Simulator
