#include "InspectedMac.h"

namespace InspectUnitTests {

InspectedMac::InspectedMac() {
    mac.users.entries = {{0, "/var/root"}, {502, "/Users/bob"}, {501, "/Users/alice"}};
    mac.processes.processes = {{1, 0, "launchd", "/sbin/launchd"}, {42, 501, "self", "/tmp/sentrel-inspect"}};
    for (const char* domain : {"system", "gui/501"}) {
        answer("print " + std::string(domain), "x = {\n\tservices = {\n\t}\n}\n");
        answer("print-disabled " + std::string(domain), "disabled services = {\n}\n");
    }
    answer("print gui/502", "", 112, "Could not find domain for user gui: 502\n");
}

void InspectedMac::addJob(const std::string& domain, const std::string& label, const std::string& details) {
    services_[domain] += "\t\t0\t-\t" + label + "\n";
    answer("print " + domain, "x = {\n\tservices = {\n" + services_[domain] + "\t}\n}\n");
    answer("print " + domain + "/" + label, domain + "/" + label + " = {\n" + details + "}\n");
}

void InspectedMac::answer(const std::string& arguments, const std::string& output, std::int32_t status,
                          const std::string& error) {
    mac.tasks.results["/bin/launchctl " + arguments] = {output, error, status,
                                                        Platform::TerminationReason::exit};
}

Inventory::Inventory InspectedMac::look(const std::string& root) {
    return Inventory::look({files, extensions, 42, root});
}

}  // namespace InspectUnitTests
