#include "MakerBundle.h"

#import <Foundation/Foundation.h>

#import "Platform/Darwin/Coding/CarrierClasses.h"
#include "Platform/Darwin/FoundationBridge.h"

using Platform::Darwin::foundationString;
using Platform::Darwin::Pool;

namespace MakerBundle {

bool load(const std::string& path) {
    const Pool pool;
    return
        [[NSBundle bundleWithPath:foundationString(path)] load] && NSClassFromString(@"MakerRecords") != Nil;
}

bool isCarrier(const std::string& className) {
    const Pool pool;
    return Platform::Darwin::codedClassOf(NSClassFromString(foundationString(className))) != nullptr;
}

}  // namespace MakerBundle
