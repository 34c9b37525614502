#include "Platform/InspectionPorts.h"
#include "Platform/Linux/Services/LinuxLoadedExtensions.h"
#include "Platform/Posix/PosixFileFacts.h"

namespace Platform {

const InspectionPorts& createInspectionPorts() {
    static Posix::PosixFileFacts files;
    static Linux::LinuxLoadedExtensions extensions;
    static const InspectionPorts ports{files, extensions};
    return ports;
}

}  // namespace Platform
