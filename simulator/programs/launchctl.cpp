// /bin/launchctl of a simulated Mac: hands its arguments to process 1 and returns its answer.

#include <iostream>
#include <string>
#include <vector>

#include "Base/WholeNumber.h"
#include "Platform/Linux/Services/MacServices.h"

int main(int argc, char** argv) {
    std::vector<std::string> request{"launchctl"};
    request.insert(request.end(), argv + (argc > 0 ? 1 : 0), argv + argc);
    const auto reply = Platform::Linux::MacServices().request(request);
    const auto status = reply && reply->size() == 3 ? Base::wholeNumber<int>((*reply)[0]) : std::nullopt;
    if (!status) {
        std::cerr << "launchctl: launchd does not answer\n";
        return 1;
    }
    std::cout << (*reply)[1] << std::flush;
    std::cerr << (*reply)[2] << std::flush;
    return *status;
}
