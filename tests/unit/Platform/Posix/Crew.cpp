// How the crews of this test program are made; takes the place of the product's FolderCrew+Shape.cpp.
#include "Platform/Posix/FolderCrew.h"

namespace Platform::Posix {

CrewShape crewShape() {
#ifdef EAGER_CREW
    return CrewShape{4, 0};
#else
    return CrewShape{2, 512};
#endif
}

}  // namespace Platform::Posix
