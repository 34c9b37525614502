#include "launchd/Transcript.h"

#include <fcntl.h>
#include <nlohmann/json.hpp>

#include "Support/Machine.h"

namespace Simulator {

using Json = nlohmann::json;

bool Transcript::open() {
    file_ = Descriptor(::open(std::string(kTranscriptFile).c_str(),
                              O_WRONLY | O_TRUNC | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644));
    return file_.valid();
}

void Transcript::record(const Caller& caller, const std::vector<std::string>& arguments) {
    const auto users = usersOfProcess(caller.pid);
    const Json call{{"program", executableOfProcess(caller.pid).value_or("")},
                    {"arguments", arguments},
                    {"realUser", users ? Json(users->real) : Json(nullptr)},
                    {"effectiveUser", caller.uid}};
    static_cast<void>(
        writeAll(file_.get(), call.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n"));
}

}  // namespace Simulator
