#include "Litter.h"

#import <Foundation/Foundation.h>
#import <Foundation/NSDebug.h>

#include <atomic>

namespace {

std::atomic<int> living = 0;

}  // namespace

@interface LitterObject : NSObject
@end

@implementation LitterObject

- (id)init {
    ++living;
    return [super init];
}

- (void)dealloc {
    --living;
    [super dealloc];
}

@end

namespace Litter {

void leave() {
    [[[LitterObject alloc] init] autorelease];
}

int count() {
    return living;
}

long moreObjects() {
    GSDebugAllocationActive(YES);
    long more = 0;
    Class* const classes = GSDebugAllocationClassList();
    for (Class* each = classes; each != nullptr && *each != Nil; ++each) {
        more += GSDebugAllocationCount(*each);
    }
    NSZoneFree(NSDefaultMallocZone(), classes);
    return more;
}

}  // namespace Litter
