// sentrel-inspect: shows which parts of the product are on a Mac, what an uninstallation or installation does
// and what was sent. Reads only; it never writes anything but the archive or report that was asked for.

#include <signal.h>

#include <exception>

#include "CommandLine.h"
#include "LookingPorts.h"
#include "Output.h"

int main(int argc, char** argv) {
    // A full disk or a file size limit is a refusal like any other.
    ::signal(SIGXFSZ, SIG_IGN);
    const Inventory::LookingPorts ports(Platform::createSystemPorts());
    Platform::SystemPorts::setCurrent(&ports.ports());
    try {
        const Inspect::Request request = Inspect::readCommandLine(argc, argv);
        if (!request.misuse.empty()) {
            return Inspect::fail(Inspect::kMisuse, request.misuse);
        }
        return request.run ? request.run() : Inspect::print(request.answer);
    } catch (const std::exception& failure) {
        return Inspect::fail(Inspect::kRefused, failure.what());
    }
}
