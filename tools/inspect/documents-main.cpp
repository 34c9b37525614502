// Writes the manual pages and completions of sentrel-inspect into a folder, for the build.

#include <cstdio>
#include <string>
#include <vector>

#include "Documents.h"

namespace {

bool write(const std::string& file, const std::string& text) {
    std::FILE* const output = std::fopen(file.c_str(), "wb");
    if (output == nullptr) {
        std::perror(file.c_str());
        return false;
    }
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), output) == text.size();
    return std::fclose(output) == 0 && isWritten;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fputs("usage: sentrel-inspect-documents FOLDER\n", stderr);
        return 2;
    }
    const std::string folder = std::string(argv[1]) + "/";
    const std::vector<Inspect::CommandDefinition>& commands = Inspect::commandDefinitions();
    bool isWritten = write(folder + "sentrel-inspect.1", Inspect::programManual(commands)) &&
                     write(folder + "sentrel-inspect.bash", Inspect::bashCompletion(commands)) &&
                     write(folder + "_sentrel-inspect", Inspect::zshCompletion(commands));
    for (const Inspect::CommandDefinition& command : commands) {
        isWritten = isWritten && write(folder + "sentrel-inspect-" + std::string(command.name) + ".1",
                                       Inspect::commandManual(command));
    }
    return isWritten ? 0 : 1;
}
