#pragma once

#import <Foundation/Foundation.h>

@interface CATransaction : NSObject
+ (void)flush;
@end
