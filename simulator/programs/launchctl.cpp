// /bin/launchctl of a simulated Mac: hands its arguments to process 1 and returns its answer.

#include <charconv>
#include <iostream>
#include <string>
#include <vector>

#include "Platform/Linux/Services/MacServices.h"

int main(int argc, char** argv) {
    std::vector<std::string> request{"launchctl"};
    request.insert(request.end(), argv + (argc > 0 ? 1 : 0), argv + argc);
    const auto reply = Platform::Linux::MacServices().request(request);
    int status = 0;
    if (!reply || reply->size() != 3 ||
        std::from_chars((*reply)[0].data(), (*reply)[0].data() + (*reply)[0].size(), status).ec !=
            std::errc()) {
        std::cerr << "launchctl: launchd does not answer\n";
        return 1;
    }
    std::cout << (*reply)[1] << std::flush;
    std::cerr << (*reply)[2] << std::flush;
    return status;
}
