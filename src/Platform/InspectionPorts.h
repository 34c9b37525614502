#pragma once

#include "Platform/FileFacts.h"
#include "Platform/LoadedExtensions.h"

namespace Platform {

/// The services that only a program which looks at a Mac uses, kept apart from SystemPorts so that the
/// privileged programs do not carry them. The referred objects outlive the struct.
struct InspectionPorts {
    FileFacts& files;
    LoadedExtensions& extensions;
};

/// The real services of the system that the program was built for; made on first use, living until the
/// process ends.
[[nodiscard]] const InspectionPorts& createInspectionPorts();

}  // namespace Platform
