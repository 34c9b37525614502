// lsregister of a simulated Mac: records every registration in /var/db/lsregister.log, one line per call.

#include <cerrno>
#include <cstring>
#include <iostream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <unistd.h>

#include "Platform/Linux/Services/MacServices.h"

int main(int argc, char** argv) {
    if (argc < 2) {
        std::cerr << "usage: lsregister [-r] [-f] path ...\n";
        return 1;
    }
    std::vector<std::string> executed{"executed"};
    executed.insert(executed.end(), argv + 1, argv + argc);
    static_cast<void>(Platform::Linux::MacServices().request(executed));
    std::string line;
    for (int index = 1; index < argc; ++index) {
        line += (index > 1 ? "\t" : "");
        line += argv[index];
    }
    line += '\n';
    const int log =
        ::open("/var/db/lsregister.log", O_WRONLY | O_APPEND | O_CREAT | O_NOFOLLOW | O_CLOEXEC, 0644);
    if (log < 0 || ::write(log, line.data(), line.size()) != static_cast<ssize_t>(line.size())) {
        std::cerr << "lsregister: cannot write its database: " << std::strerror(errno) << '\n';
        return 1;
    }
    ::close(log);
    return 0;
}
