"""Which sources belong to which room, and which tests answer for it."""

import dataclasses
import fnmatch


@dataclasses.dataclass(frozen=True)
class Program:
    """A test program, the tests of it that do not count, and the program that they start; if none, they call the room's
    code."""
    target: str
    without: str = ""
    under_test: str = None

    def tests_but(self, others=""):
        """The filter for those that count, but not these others."""
        return f"*-{self.without}:{others}"


@dataclasses.dataclass(frozen=True)
class Room:
    name: str
    sources: tuple
    programs: tuple
    without: tuple = ()

    def has(self, path):
        inside = any(fnmatch.fnmatch(path, pattern) for pattern in self.sources)
        return inside and not any(fnmatch.fnmatch(path, pattern) for pattern in self.without)


PRODUCT = Program("ProductTests")

# The programs of a room run in this order until one notices the mutant. A browser does not start in the sandbox.
ROOMS = (
    Room("Base/Archive", ("src/Base/Archive/*.cpp",), (Program("BaseTests"), PRODUCT)),
    Room("Base", ("src/Base/*.cpp",), (Program("BaseTests"), PRODUCT), without=("src/Base/Archive/*",)),
    Room("NorvikCommon", ("src/NorvikCommon/*.cpp",), (PRODUCT,)),
    Room("SwiftUtils", ("src/SwiftUtils/*.cpp",), (PRODUCT,)),
    Room("InstallCommon", ("src/InstallCommon/*.cpp",), (PRODUCT,)),
    Room("Uninstaller", ("src/Uninstaller/*.cpp",), (PRODUCT,), without=("src/Uninstaller/main.cpp",)),
    Room("Helpers", ("src/Helpers/*.cpp",), (Program("HelperTests"),), without=("src/Helpers/*Main.cpp",)),
    Room("Platform/Posix", ("src/Platform/Posix/*.cpp", "src/Platform/*.cpp"),
         (Program("PlatformTests"), Program("PlatformReaddirTests"), Program("PlatformCrewTests"), Program("XPCTests"), PRODUCT,
          Program("InspectUnitTests")),
         without=("src/Platform/Linux/*", "src/Platform/Darwin/*")),
    Room("Platform/Linux", ("src/Platform/Linux/*.cpp",), (Program("PlatformTests"), Program("XPCTests"))),
    Room("tools", ("tools/*.cpp",),
         (Program("InspectUnitTests"), Program("InspectTests", without="Page.*", under_test="sentrel-inspect")),
         without=("tools/selftest/*", "tools/inspect/*main.cpp")),
)


def room_of(path):
    return next((room for room in ROOMS if room.has(path)), None)
