#pragma once

#include_next <AppKit/AppKit.h>

// What GNUstep's classes leave out.

@interface NSView (DeclaredByApple)
- (NSSize)intrinsicContentSize;
- (NSRect)frameForAlignmentRect:(NSRect)alignmentRect;
@end

@interface NSColor (DeclaredByApple)
+ (NSColor*)secondaryLabelColor;
@end
