#include "DispatchContract.h"
#include "Platform/Linux/Processes/LinuxDispatch.h"
#include "Platform/Posix/PosixClock.h"

namespace PlatformTests {

struct LinuxDispatchAndClock {
    Platform::Linux::LinuxDispatch dispatch;
    Platform::Posix::PosixClock clock;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Linux, DispatchContract, LinuxDispatchAndClock);

}  // namespace PlatformTests
