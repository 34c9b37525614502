#import "Uninstaller/AppKit/GNUstep/Theme.h"

#import "Uninstaller/AppKit/GNUstep/Cells.h"

static const CGFloat kTitleBarHeight = 32;
static const CGFloat kCloseButtonSide = 18;
static const CGFloat kButtonRadius = 6;
static const CGFloat kProgressThickness = 6;

static NSColor* color(unsigned rgb) {
    return [NSColor colorWithCalibratedRed:((rgb >> 16) & 0xFF) / 255.0
                                     green:((rgb >> 8) & 0xFF) / 255.0
                                      blue:(rgb & 0xFF) / 255.0
                                     alpha:1];
}

static NSColor* accent(void) {
    return color(0x1768D8);
}

static NSColor* line(void) {
    return color(0xC9CDD3);
}

static void fillRounded(NSRect frame, CGFloat radius, NSColor* fill, NSColor* stroke) {
    NSRect edge = NSInsetRect(frame, 0.5, 0.5);
    NSBezierPath* path = [NSBezierPath bezierPathWithRoundedRect:edge xRadius:radius yRadius:radius];
    [fill set];
    [path fill];
    [stroke set];
    [path setLineWidth:1];
    [path stroke];
}

static BOOL isDefaultButton(NSCell* cell) {
    return [cell isKindOfClass:[NSButtonCell class]] &&
           [[(NSButtonCell*)cell keyEquivalent] isEqualToString:@"\r"];
}

static BOOL isPressed(GSThemeControlState state) {
    return state == GSThemeHighlightedState || state == GSThemeHighlightedFirstResponderState ||
           state == GSThemeSelectedState || state == GSThemeSelectedFirstResponderState;
}

@implementation SNTTheme

+ (void)install {
    SNTTheme* theme = [[self alloc] initWithBundle:nil];
    [self setTheme:theme];
    [theme release];
    SNTUseCells();
}

- (NSString*)name {
    // GSTheme reverts to the theme in the settings as soon as a setting changes.
    return @"GNUstep";
}

- (NSColorList*)colors {
    if (colors_ != nil) {
        return colors_;
    }
    static const struct {
        const char* name;
        unsigned rgb;
    } colors[] = {
        {"windowBackgroundColor", 0xF6F7F8},
        {"controlBackgroundColor", 0xFFFFFF},
        {"controlColor", 0xF6F7F8},
        {"controlTextColor", 0x1F2328},
        {"disabledControlTextColor", 0x9AA1AA},
        {"textColor", 0x1F2328},
        {"textBackgroundColor", 0xFFFFFF},
        {"labelColor", 0x1F2328},
        {"secondaryLabelColor", 0x667080},
        {"controlShadowColor", 0xC9CDD3},
        {"controlDarkShadowColor", 0xA9AFB8},
        {"controlHighlightColor", 0xE7E9ED},
        {"controlLightHighlightColor", 0xFFFFFF},
        {"selectedControlColor", 0xDCE8FA},
        {"selectedControlTextColor", 0x1F2328},
        {"selectedTextBackgroundColor", 0xBBD6FB},
        {"selectedTextColor", 0x1F2328},
        {"selectedMenuItemColor", 0x1768D8},
        {"selectedMenuItemTextColor", 0xFFFFFF},
        {"windowFrameColor", 0xE9EBEE},
        {"windowFrameTextColor", 0x3A414B},
        {"keyboardFocusIndicatorColor", 0x1768D8},
    };
    colors_ = [[NSColorList alloc] initWithName:@"System"];
    for (size_t index = 0; index < sizeof colors / sizeof colors[0]; ++index) {
        [colors_ setColor:color(colors[index].rgb) forKey:[NSString stringWithUTF8String:colors[index].name]];
    }
    return colors_;
}

- (void)dealloc {
    [colors_ release];
    [super dealloc];
}

@end

@implementation SNTTheme (Controls)

/// The default button is blue; it needs no picture of the Return key.
- (void)setKeyEquivalent:(NSString*)key forButtonCell:(NSButtonCell*)cell {
    (void)key;
    (void)cell;
}

- (GSThemeMargins)buttonMarginsForCell:(NSCell*)cell style:(int)style state:(GSThemeControlState)state {
    GSThemeMargins margins = {10, 10, 6, 6};
    if (![cell isBordered]) {
        margins = [super buttonMarginsForCell:cell style:style state:state];
    }
    return margins;
}

- (void)drawButton:(NSRect)frame
                in:(NSCell*)cell
              view:(NSView*)view
             style:(int)style
             state:(GSThemeControlState)state {
    (void)view;
    (void)style;
    if (![cell isEnabled]) {
        fillRounded(frame, kButtonRadius, color(0xF0F1F3), color(0xDDE0E4));
    } else if (isDefaultButton(cell)) {
        NSColor* blue = isPressed(state) ? color(0x1253AD) : accent();
        fillRounded(frame, kButtonRadius, blue, color(0x1458B8));
    } else {
        fillRounded(frame, kButtonRadius, isPressed(state) ? color(0xE4E7EB) : [NSColor whiteColor], line());
    }
}

- (void)drawFocusFrame:(NSRect)frame view:(NSView*)view {
    (void)frame;
    (void)view;
}

- (void)drawProgressIndicator:(NSProgressIndicator*)progress
                   withBounds:(NSRect)bounds
                     withClip:(NSRect)rect
                      atCount:(int)count
                     forValue:(double)value {
    (void)rect;
    NSRect track = NSMakeRect(NSMinX(bounds), floor(NSMidY(bounds) - kProgressThickness / 2), NSWidth(bounds),
                              kProgressThickness);
    CGFloat radius = kProgressThickness / 2;
    [color(0xDFE3E8) set];
    [[NSBezierPath bezierPathWithRoundedRect:track xRadius:radius yRadius:radius] fill];
    if ([progress isIndeterminate]) {
        // A piece that goes to and fro, one way in this many steps of the animation.
        const int way = 24;
        int step = count % (2 * way);
        CGFloat place = (CGFloat)(step < way ? step : 2 * way - step) / way;
        CGFloat piece = floor(NSWidth(track) / 5);
        track.origin.x += floor((NSWidth(track) - piece) * place);
        track.size.width = piece;
        [accent() set];
        [[NSBezierPath bezierPathWithRoundedRect:track xRadius:radius yRadius:radius] fill];
    } else if (value > 0) {
        track.size.width = fmax(kProgressThickness, NSWidth(track) * value);
        [accent() set];
        [[NSBezierPath bezierPathWithRoundedRect:track xRadius:radius yRadius:radius] fill];
    }
}

@end

@implementation SNTTheme (Windows)

- (float)titlebarHeight {
    return kTitleBarHeight;
}

- (float)titlebarButtonSize {
    return kCloseButtonSide;
}

- (float)titlebarPaddingRight {
    return (kTitleBarHeight - kCloseButtonSide) / 2;
}

- (float)titlebarPaddingTop {
    return (kTitleBarHeight - kCloseButtonSide) / 2;
}

static NSImage* closeImage(NSColor* stroke) {
    NSImage* image =
        [[[NSImage alloc] initWithSize:NSMakeSize(kCloseButtonSide, kCloseButtonSide)] autorelease];
    NSRect cross = NSInsetRect(NSMakeRect(0, 0, kCloseButtonSide, kCloseButtonSide), 5, 5);
    [image lockFocus];
    NSBezierPath* path = [NSBezierPath bezierPath];
    [path moveToPoint:NSMakePoint(NSMinX(cross), NSMinY(cross))];
    [path lineToPoint:NSMakePoint(NSMaxX(cross), NSMaxY(cross))];
    [path moveToPoint:NSMakePoint(NSMinX(cross), NSMaxY(cross))];
    [path lineToPoint:NSMakePoint(NSMaxX(cross), NSMinY(cross))];
    [path setLineWidth:1.5];
    [path setLineCapStyle:NSRoundLineCapStyle];
    [stroke set];
    [path stroke];
    [image unlockFocus];
    return image;
}

- (NSButton*)standardWindowButton:(NSWindowButton)button forStyleMask:(NSUInteger)mask {
    NSButton* standard = [super standardWindowButton:button forStyleMask:mask];
    if (button == NSWindowCloseButton) {
        [standard setBordered:NO];
        [standard setImage:closeImage(color(0x667080))];
        [standard setAlternateImage:closeImage(accent())];
    }
    return standard;
}

- (void)drawWindowBorder:(NSRect)rect
               withFrame:(NSRect)frame
            forStyleMask:(unsigned int)styleMask
                   state:(int)inputState
                andTitle:(NSString*)title {
    (void)rect;
    if (styleMask & (NSTitledWindowMask | NSClosableWindowMask)) {
        // GNUstep's states of a window: 0 has the keyboard, 1 has nothing, 2 is the main window without it.
        BOOL active = inputState == 0;
        NSRect bar = NSMakeRect(0, NSMaxY(frame) - kTitleBarHeight, NSWidth(frame), kTitleBarHeight);
        [(active ? color(0xE9EBEE) : color(0xF6F7F8)) set];
        NSRectFill(bar);
        [color(0xD3D7DC) set];
        NSRectFill(NSMakeRect(0, NSMinY(bar), NSWidth(bar), 1));
        NSDictionary* attributes =
            [NSDictionary dictionaryWithObjectsAndKeys:[NSFont titleBarFontOfSize:13], NSFontAttributeName,
                                                       active ? color(0x3A414B) : color(0x9AA1AA),
                                                       NSForegroundColorAttributeName, nil];
        NSSize size = [title sizeWithAttributes:attributes];
        CGFloat widest = NSWidth(bar) - 2 * kTitleBarHeight;
        NSRect drawn =
            NSMakeRect(floor(NSMidX(bar) - fmin(size.width, widest) / 2),
                       floor(NSMidY(bar) - size.height / 2), fmin(size.width + 2, widest), size.height);
        [title drawInRect:drawn withAttributes:attributes];
    }
    [color(0xAEB4BD) set];
    NSFrameRect(frame);
}

@end

@implementation SNTTheme (ApplicationMenu)

- (BOOL)menuShouldShowIcon {
    return NO;
}

- (NSColor*)menuBackgroundColor {
    return color(0xFCFCFD);
}

- (NSColor*)menuItemBackgroundColor {
    return color(0xFCFCFD);
}

- (NSColor*)menuBorderColor {
    return line();
}

/// The bar is a strip with a line below; a menu has a line all around.
- (NSColor*)menuBorderColorForEdge:(NSRectEdge)edge isHorizontal:(BOOL)horizontal {
    return !horizontal || edge == NSMinYEdge ? line() : color(0xFCFCFD);
}

- (NSColor*)menuSeparatorColor {
    return color(0xDFE3E8);
}

- (CGFloat)menuBarHeight {
    return 26;
}

- (CGFloat)menuItemHeight {
    return 26;
}

- (CGFloat)menuSeparatorHeight {
    return 9;
}

- (BOOL)drawsBorderForMenuItemCell:(NSMenuItemCell*)cell
                             state:(GSThemeControlState)state
                      isHorizontal:(BOOL)horizontal {
    (void)cell;
    (void)state;
    (void)horizontal;
    return NO;
}

@end
