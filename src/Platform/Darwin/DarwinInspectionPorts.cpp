#include "Platform/Darwin/DarwinLoadedExtensions.h"
#include "Platform/InspectionPorts.h"
#include "Platform/Posix/PosixFileFacts.h"

namespace Platform {

const InspectionPorts& createInspectionPorts() {
    static Posix::PosixFileFacts files;
    static Darwin::DarwinLoadedExtensions extensions;
    static const InspectionPorts ports{files, extensions};
    return ports;
}

}  // namespace Platform
