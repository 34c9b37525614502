#include "Platform/Posix/FolderCrew.h"

namespace Platform::Posix {

namespace {

constexpr unsigned kThreads = 4;
/// Starting a thread costs as much as about ten entries; a tree of a few hundred is done before it helps.
constexpr std::size_t kSmallTree = 512;

}  // namespace

CrewShape crewShape() {
    return CrewShape{kThreads, kSmallTree};
}

}  // namespace Platform::Posix
