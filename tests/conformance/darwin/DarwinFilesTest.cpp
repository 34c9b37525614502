// The macOS file manager over GNUstep's Foundation, with this system's native file calls.
#include "CopyContract.h"
#include "CopyDetailsContract.h"
#include "FileManagerContract.h"
#include "OwnershipContract.h"
#include "Platform/Darwin/DarwinFileManager.h"
#include "RemovalContract.h"

namespace PlatformTests {

using Platform::Darwin::DarwinFileManager;

INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, FileManagerContract, DarwinFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, OwnershipContract, DarwinFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, RemovalContract, DarwinFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, CopyContract, DarwinFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, CopyDetailsContract, DarwinFileManager);

}  // namespace PlatformTests
