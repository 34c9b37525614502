// Port contracts that the conformance tests cannot hold over GNUstep, or that need no stand-in on a Mac.
#include "BundleLookupContract.h"
#include "BundlesContract.h"
#include "Platform/Darwin/DarwinBundles.h"

namespace PlatformTests {

using Platform::Darwin::DarwinBundles;

INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, BundlesContract, DarwinBundles);
INSTANTIATE_TYPED_TEST_SUITE_P(Darwin, BundleLookupContract, DarwinBundles);

}  // namespace PlatformTests
