#pragma once

#include <string>

namespace CLI {
class App;
}

namespace Simulator {

/// The message about the first unexpected word on a command line, with the word that was probably meant;
/// `otherwise` if every word was expected.
[[nodiscard]] std::string unexpectedWord(const CLI::App& app, const std::string& otherwise);

/// For the help: every fault, and every generation of the product.
[[nodiscard]] std::string faultList();
[[nodiscard]] std::string generationList();

}  // namespace Simulator
