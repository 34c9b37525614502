// Port contracts that the conformance tests cannot hold over GNUstep, or that need no stand-in on a Mac.
#include "BundleLookupContract.h"
#include "BundlesContract.h"
#include "CopyContract.h"
#include "CopyDetailsContract.h"
#include "FileManagerContract.h"
#include "OwnershipContract.h"
#include "Platform/Darwin/DarwinBundles.h"
#include "Platform/Posix/PosixFileManager.h"
#include "RemovalContract.h"

namespace PlatformTests {

using Platform::Darwin::DarwinBundles;
using Platform::Posix::PosixFileManager;

INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, BundlesContract, DarwinBundles);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, BundleLookupContract, DarwinBundles);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, FileManagerContract, PosixFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, OwnershipContract, PosixFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, RemovalContract, PosixFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, CopyContract, PosixFileManager);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, CopyDetailsContract, PosixFileManager);

}  // namespace PlatformTests
