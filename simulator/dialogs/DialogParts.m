#import "dialogs/DialogParts.h"

#import <objc/runtime.h>
#import <unistd.h>

static const CGFloat kCorner = 5;

static NSColor* gray(CGFloat white) {
    return [NSColor colorWithCalibratedWhite:white alpha:1];
}

static NSColor* color(CGFloat red, CGFloat green, CGFloat blue) {
    return [NSColor colorWithCalibratedRed:red green:green blue:blue alpha:1];
}

@interface DIALOG_CLASS (Panel) : NSPanel
@end

@implementation DIALOG_CLASS (Panel)

/// Panels without a title bar would not get the keys.
- (BOOL)canBecomeKeyWindow {
    return YES;
}

- (BOOL)canBecomeMainWindow {
    return YES;
}

@end

@interface DIALOG_CLASS (Face) : NSView
@end

@implementation DIALOG_CLASS (Face)

- (BOOL)isFlipped {
    return YES;
}

- (void)drawRect:(NSRect)dirty {
    (void)dirty;
    [gray(0.93) set];
    NSRectFill([self bounds]);
    [gray(0.62) set];
    NSFrameRect([self bounds]);
}

@end

@interface DIALOG_CLASS (FieldFrame) : NSView
@end

@implementation DIALOG_CLASS (FieldFrame)

- (void)drawRect:(NSRect)dirty {
    (void)dirty;
    [[NSColor whiteColor] set];
    NSRectFill([self bounds]);
    [gray(0.68) set];
    NSFrameRect([self bounds]);
}

@end

@interface DIALOG_CLASS (ButtonCell) : NSButtonCell
@end

@implementation DIALOG_CLASS (ButtonCell)

- (NSGradient*)filling:(BOOL)isDefault {
    if (isDefault) {
        return [self isHighlighted]
                   ? [[[NSGradient alloc] initWithStartingColor:color(0.16, 0.44, 0.86)
                                                    endingColor:color(0.05, 0.31, 0.75)] autorelease]
                   : [[[NSGradient alloc] initWithStartingColor:color(0.40, 0.66, 0.99)
                                                    endingColor:color(0.10, 0.44, 0.95)] autorelease];
    }
    CGFloat top = [self isHighlighted] ? 0.86 : 1.0;
    return [[[NSGradient alloc] initWithStartingColor:gray(top) endingColor:gray(top - 0.03)] autorelease];
}

- (void)drawWithFrame:(NSRect)frame inView:(NSView*)view {
    BOOL isDefault = [[self keyEquivalent] isEqualToString:@"\r"];
    NSBezierPath* outline = [NSBezierPath bezierPathWithRoundedRect:NSInsetRect(frame, 0.5, 0.5)
                                                            xRadius:kCorner
                                                            yRadius:kCorner];
    [[self filling:isDefault] drawInBezierPath:outline angle:[view isFlipped] ? 90 : 270];
    [(isDefault ? color(0.09, 0.38, 0.84) : gray(0.70)) set];
    [outline stroke];
    NSDictionary* attributes =
        [NSDictionary dictionaryWithObjectsAndKeys:[NSFont systemFontOfSize:12], NSFontAttributeName,
                                                   isDefault ? [NSColor whiteColor] : gray(0.1),
                                                   NSForegroundColorAttributeName, nil];
    NSSize size = [[self title] sizeWithAttributes:attributes];
    [[self title] drawAtPoint:NSMakePoint(NSMidX(frame) - size.width / 2, NSMidY(frame) - size.height / 2)
               withAttributes:attributes];
}

@end

/// Of NSPasteboard: typing into a field would start its server (gpbs), which would outlive the dialog.
static id noServer(id self, SEL selector) {
    (void)self;
    (void)selector;
    return nil;
}

static void doWithoutPasteboardServer(void) {
    Method server = class_getClassMethod([NSPasteboard class], NSSelectorFromString(@"_pbs"));
    if (server != NULL) {
        method_setImplementation(server, (IMP)noServer);
    }
}

NSPanel* dialogNewPanel(NSSize size, NSString* title) {
    doWithoutPasteboardServer();
    NSPanel* panel =
        [[DIALOG_CLASS(Panel) alloc] initWithContentRect:NSMakeRect(0, 0, size.width, size.height)
                                               styleMask:NSBorderlessWindowMask
                                                 backing:NSBackingStoreBuffered
                                                   defer:NO];
    [panel setTitle:title];
    [panel setReleasedWhenClosed:NO];
    [panel setHidesOnDeactivate:NO];
    [panel setLevel:NSModalPanelWindowLevel];
    [panel setContentView:[[[DIALOG_CLASS(Face) alloc]
                              initWithFrame:NSMakeRect(0, 0, size.width, size.height)] autorelease]];
    return panel;
}

NSTextField* dialogAddText(NSPanel* panel, NSRect frame, NSString* text, NSFont* font) {
    NSTextField* field = [[[NSTextField alloc] initWithFrame:frame] autorelease];
    [field setEditable:NO];
    [field setSelectable:NO];
    [field setBordered:NO];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    [field setFont:font];
    [field setTextColor:gray(0.08)];
    [[field cell] setWraps:YES];
    [field setStringValue:text];
    [[panel contentView] addSubview:field];
    return field;
}

CGFloat dialogTextHeight(NSString* text, NSFont* font, CGFloat width) {
    if ([text length] == 0) {
        return 0;
    }
    NSDictionary* attributes = [NSDictionary dictionaryWithObject:font forKey:NSFontAttributeName];
    NSAttributedString* styled = [[[NSAttributedString alloc] initWithString:text
                                                                  attributes:attributes] autorelease];
    // A text field keeps a little of its width to itself.
    NSRect bounds = [styled boundingRectWithSize:NSMakeSize(width - 8, 10000)
                                         options:NSStringDrawingUsesLineFragmentOrigin];
    return ceil(NSHeight(bounds)) + 2;
}

void dialogAddFieldName(NSPanel* panel, NSRect fieldFrame, CGFloat left, NSString* name) {
    NSRect frame = NSMakeRect(left, NSMinY(fieldFrame) + 4, NSMinX(fieldFrame) - left - 6, 18);
    NSTextField* text = dialogAddText(panel, frame, name, [NSFont systemFontOfSize:12]);
    [text setAlignment:NSRightTextAlignment];
}

NSTextField* dialogAddField(NSPanel* panel, NSRect frame, BOOL isSecure) {
    NSView* border = [[[DIALOG_CLASS(FieldFrame) alloc] initWithFrame:frame] autorelease];
    [[panel contentView] addSubview:border];
    Class class = isSecure ? [NSSecureTextField class] : [NSTextField class];
    NSTextField* field = [[[class alloc] initWithFrame:NSInsetRect(frame, 3, 3)] autorelease];
    [field setBordered:NO];
    [field setBezeled:NO];
    [field setDrawsBackground:YES];
    [field setBackgroundColor:[NSColor whiteColor]];
    [field setTextColor:[NSColor blackColor]];
    [field setFont:[NSFont systemFontOfSize:12]];
    [[field cell] setScrollable:YES];
    [[panel contentView] addSubview:field];
    return field;
}

CGFloat dialogButtonWidth(NSString* title) {
    NSDictionary* attributes = [NSDictionary dictionaryWithObject:[NSFont systemFontOfSize:12]
                                                           forKey:NSFontAttributeName];
    return MAX(84, ceil([title sizeWithAttributes:attributes].width) + 32);
}

NSButton* dialogAddButton(NSPanel* panel, NSRect frame, NSString* title, NSString* key, id target,
                          SEL action) {
    NSButton* button = [[[NSButton alloc] initWithFrame:frame] autorelease];
    [button setCell:[[[DIALOG_CLASS(ButtonCell) alloc] initTextCell:title] autorelease]];
    [button setTitle:title];
    [button setKeyEquivalent:key];
    [button setTarget:target];
    [button setAction:action];
    [[panel contentView] addSubview:button];
    return button;
}

NSInteger dialogRun(NSPanel* panel, NSTextField* field) {
    [panel center];
    [NSApp activateIgnoringOtherApps:YES];
    [panel makeKeyAndOrderFront:nil];
    if (field != nil) {
        [panel makeFirstResponder:field];
    }
    NSInteger code = [NSApp runModalForWindow:panel];
    [panel orderOut:nil];
    return code;
}

void dialogRefuse(NSPanel* panel, NSTextField* field, NSTextField* message, NSString* text) {
    [message setStringValue:text];
    [field setStringValue:@""];
    [panel makeFirstResponder:field];
    [panel display];
    NSPoint origin = [panel frame].origin;
    for (int step = 0; step < 6; ++step) {
        [panel setFrameOrigin:NSMakePoint(origin.x + (step % 2 == 0 ? 12 : -12), origin.y)];
        [panel flushWindow];
        usleep(45000);
    }
    [panel setFrameOrigin:origin];
}
