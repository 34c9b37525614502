#import "Uninstaller/AppKit/GNUstep/Cells.h"

static NSString* const kEllipsis = @"\u2026";

@implementation SNTButtonCell

- (NSRect)drawTitle:(NSAttributedString*)title withFrame:(NSRect)frame inView:(NSView*)view {
    if (![self isBordered] || ![self isEnabled] || ![[self keyEquivalent] isEqualToString:@"\r"]) {
        return [super drawTitle:title withFrame:frame inView:view];
    }
    NSMutableAttributedString* white = [[title mutableCopy] autorelease];
    [white addAttribute:NSForegroundColorAttributeName
                  value:[NSColor whiteColor]
                  range:NSMakeRange(0, [white length])];
    return [super drawTitle:white withFrame:frame inView:view];
}

@end

@implementation SNTTextFieldCell

/// The text with `count` of its characters left, the ellipsis in place of the others.
static NSAttributedString* shortened(NSAttributedString* text, NSLineBreakMode mode, NSUInteger count) {
    NSUInteger head = mode == NSLineBreakByTruncatingTail   ? count
                      : mode == NSLineBreakByTruncatingHead ? 0
                                                            : (count + 1) / 2;
    NSMutableAttributedString* result = [[text mutableCopy] autorelease];
    // Characters that belong together stay together.
    NSRange cut =
        [[text string] rangeOfComposedCharacterSequencesForRange:NSMakeRange(head, [text length] - count)];
    [result replaceCharactersInRange:cut withString:kEllipsis];
    return result;
}

static NSAttributedString* fitting(NSAttributedString* text, NSLineBreakMode mode, CGFloat width) {
    NSUInteger fits = 0;
    NSUInteger tooLong = [text length];
    while (tooLong - fits > 1) {
        NSUInteger middle = fits + (tooLong - fits) / 2;
        if ([shortened(text, mode, middle) size].width <= width) {
            fits = middle;
        } else {
            tooLong = middle;
        }
    }
    return shortened(text, mode, fits);
}

- (void)drawInteriorWithFrame:(NSRect)frame inView:(NSView*)view {
    NSLineBreakMode mode = [self lineBreakMode];
    NSAttributedString* text = [self attributedStringValue];
    NSRect line = [self titleRectForBounds:frame];
    if ((mode != NSLineBreakByTruncatingHead && mode != NSLineBreakByTruncatingMiddle &&
         mode != NSLineBreakByTruncatingTail) ||
        [text length] == 0 || [text size].width <= NSWidth(line)) {
        [super drawInteriorWithFrame:frame inView:view];
        return;
    }
    [fitting(text, mode, NSWidth(line)) drawInRect:line];
}

@end

void SNTUseCells(void) {
    [NSButton setCellClass:[SNTButtonCell class]];
    [NSTextField setCellClass:[SNTTextFieldCell class]];
}
