#include "Output.h"

#include <iostream>

#include "DisplayText.h"
#include "Files.h"

namespace Inspect {

int fail(int status, const std::string& line) {
    std::cerr << "sentrel-inspect: " << line << '\n';
    return status;
}

int refuse(const std::string& file, std::string_view standardStream, const std::string& why) {
    const std::string name = file.empty() ? "\"\"" : shown(std::string_view(file));
    return fail(kRefused,
                (file == "-" ? std::string(standardStream) : name) + ": " + shown(std::string_view(why)));
}

int print(std::string_view text, int status) {
    std::string why;
    return writeStandardOutput(text, why) ? status : refuse("-", "standard output", why);
}

}  // namespace Inspect
