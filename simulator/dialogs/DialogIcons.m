#import "dialogs/DialogParts.h"

static NSColor* gray(CGFloat white) {
    return [NSColor colorWithCalibratedWhite:white alpha:1];
}

static NSColor* color(CGFloat red, CGFloat green, CGFloat blue) {
    return [NSColor colorWithCalibratedRed:red green:green blue:blue alpha:1];
}

/// From the top down.
static void fill(NSBezierPath* path, NSColor* top, NSColor* bottom) {
    NSGradient* gradient = [[NSGradient alloc] initWithStartingColor:top endingColor:bottom];
    [gradient drawInBezierPath:path angle:270];
    [gradient release];
}

static void curve(NSBezierPath* path, NSPoint end, NSPoint first, NSPoint second) {
    [path curveToPoint:end controlPoint1:first controlPoint2:second];
}

@interface DIALOG_CLASS (IconView) : NSView {
    DialogIcon icon_;
}
- (void)setIcon:(DialogIcon)icon;
@end

@implementation DIALOG_CLASS (IconView)

- (void)setIcon:(DialogIcon)icon {
    icon_ = icon;
}

/// All in a square of 64.
- (void)drawLock {
    NSBezierPath* shackle = [NSBezierPath bezierPath];
    [shackle moveToPoint:NSMakePoint(19, 30)];
    [shackle lineToPoint:NSMakePoint(19, 43)];
    [shackle appendBezierPathWithArcWithCenter:NSMakePoint(32, 43)
                                        radius:13
                                    startAngle:180
                                      endAngle:0
                                     clockwise:YES];
    [shackle lineToPoint:NSMakePoint(45, 30)];
    [shackle setLineWidth:7];
    [gray(0.45) set];
    [shackle stroke];
    [shackle setLineWidth:4];
    [gray(0.78) set];
    [shackle stroke];

    NSBezierPath* body = [NSBezierPath bezierPathWithRoundedRect:NSMakeRect(10, 4, 44, 32)
                                                         xRadius:5
                                                         yRadius:5];
    fill(body, color(0.98, 0.83, 0.42), color(0.80, 0.56, 0.13));
    [color(0.58, 0.40, 0.08) set];
    [body stroke];

    [color(0.33, 0.22, 0.05) set];
    [[NSBezierPath bezierPathWithOvalInRect:NSMakeRect(27.5, 19, 9, 9)] fill];
    NSRectFill(NSMakeRect(30, 11, 4, 11));
}

- (void)drawShield {
    NSBezierPath* shield = [NSBezierPath bezierPath];
    [shield moveToPoint:NSMakePoint(32, 62)];
    curve(shield, NSMakePoint(56, 54), NSMakePoint(39, 57), NSMakePoint(48, 54));
    curve(shield, NSMakePoint(32, 3), NSMakePoint(58, 30), NSMakePoint(49, 11));
    curve(shield, NSMakePoint(8, 54), NSMakePoint(15, 11), NSMakePoint(6, 30));
    curve(shield, NSMakePoint(32, 62), NSMakePoint(16, 54), NSMakePoint(25, 57));
    [shield closePath];
    fill(shield, color(0.34, 0.60, 0.93), color(0.09, 0.33, 0.70));
    [color(0.06, 0.24, 0.53) set];
    [shield setLineWidth:2];
    [shield stroke];

    [[NSColor whiteColor] set];
    [[NSBezierPath bezierPathWithRoundedRect:NSMakeRect(28.5, 27, 7, 23) xRadius:3 yRadius:3] fill];
    [[NSBezierPath bezierPathWithOvalInRect:NSMakeRect(28, 15, 8, 8)] fill];
}

- (void)drawRect:(NSRect)dirty {
    (void)dirty;
    NSSize size = [self bounds].size;
    [NSGraphicsContext saveGraphicsState];
    NSAffineTransform* scale = [NSAffineTransform transform];
    [scale scaleXBy:size.width / 64 yBy:size.height / 64];
    [scale concat];
    if (icon_ == DialogIconLock) {
        [self drawLock];
    } else {
        [self drawShield];
    }
    [NSGraphicsContext restoreGraphicsState];
}

@end

void dialogAddIcon(NSPanel* panel, NSRect frame, DialogIcon icon) {
    DIALOG_CLASS(IconView)* view = [[[DIALOG_CLASS(IconView) alloc] initWithFrame:frame] autorelease];
    [view setIcon:icon];
    [[panel contentView] addSubview:view];
}
