# The tests that a Mac runs: what is written against the ports, what both systems do alike, and the macOS side itself. The others
# need the simulated Mac, GNUstep's display or Linux's own calls.

# The tests use the file system library, which macOS has from 10.15 on; what they test is built for 10.13 all the same.
set(CMAKE_OSX_DEPLOYMENT_TARGET "10.15")
# The calls that are right on 10.13 are deprecated by then.
add_compile_options(-Wno-deprecated-declarations)

# Homebrew's GoogleTest is of one processor; this one is built like the tests. Debian's version, so that both systems run the same.
include(FetchContent)
set(INSTALL_GTEST OFF)
FetchContent_Declare(GTest
    URL https://github.com/google/googletest/archive/refs/tags/release-1.12.1.tar.gz
    URL_HASH SHA256=81964fe578e9bd7c94dfdb09c8e4d6e6759e19967e397dbea48d1c10e45d0df2
    OVERRIDE_FIND_PACKAGE)
find_package(GTest REQUIRED)
if(CMAKE_CROSSCOMPILING)
    # The programs cannot be asked for their tests.
    set(CMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE PRE_TEST)
endif()

add_subdirectory(support)
foreach(room IN ITEMS unit macos)
    add_subdirectory(${room})
endforeach()
