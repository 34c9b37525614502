#import "dialogs/DialogParts.h"

#import <objc/runtime.h>
#import <unistd.h>

// The look of the uninstaller's window, so that everything looks like one system.
static const CGFloat kCorner = 6;

static NSColor* color(unsigned rgb) {
    return [NSColor colorWithCalibratedRed:((rgb >> 16) & 0xFF) / 255.0
                                     green:((rgb >> 8) & 0xFF) / 255.0
                                      blue:(rgb & 0xFF) / 255.0
                                     alpha:1];
}

static NSColor* face(void) {
    return color(0xF6F7F8);
}

static NSColor* line(void) {
    return color(0xC9CDD3);
}

static NSColor* ink(void) {
    return color(0x1F2328);
}

static void fillRounded(NSRect frame, NSColor* fill, NSColor* stroke) {
    NSBezierPath* outline = [NSBezierPath bezierPathWithRoundedRect:NSInsetRect(frame, 0.5, 0.5)
                                                            xRadius:kCorner
                                                            yRadius:kCorner];
    [fill set];
    [outline fill];
    [stroke set];
    [outline stroke];
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
    [face() set];
    NSRectFill([self bounds]);
    [line() set];
    NSFrameRect([self bounds]);
}

@end

@interface DIALOG_CLASS (FieldFrame) : NSView
@end

@implementation DIALOG_CLASS (FieldFrame)

- (void)drawRect:(NSRect)dirty {
    (void)dirty;
    fillRounded([self bounds], [NSColor whiteColor], line());
}

@end

@interface DIALOG_CLASS (ButtonCell) : NSButtonCell
@end

@implementation DIALOG_CLASS (ButtonCell)

- (void)drawWithFrame:(NSRect)frame inView:(NSView*)view {
    (void)view;
    BOOL isDefault = [[self keyEquivalent] isEqualToString:@"\r"];
    if (isDefault) {
        fillRounded(frame, color([self isHighlighted] ? 0x1253AD : 0x1768D8), color(0x1458B8));
    } else {
        fillRounded(frame, [self isHighlighted] ? color(0xE4E7EB) : [NSColor whiteColor], line());
    }
    NSDictionary* attributes =
        [NSDictionary dictionaryWithObjectsAndKeys:[NSFont systemFontOfSize:13], NSFontAttributeName,
                                                   isDefault ? [NSColor whiteColor] : ink(),
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
    [field setTextColor:ink()];
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
    [field setTextColor:ink()];
    [field setFont:[NSFont systemFontOfSize:12]];
    [[field cell] setScrollable:YES];
    [[panel contentView] addSubview:field];
    return field;
}

CGFloat dialogButtonWidth(NSString* title) {
    NSDictionary* attributes = [NSDictionary dictionaryWithObject:[NSFont systemFontOfSize:13]
                                                           forKey:NSFontAttributeName];
    return MAX(88, ceil([title sizeWithAttributes:attributes].width) + 32);
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

void dialogAddAnswers(NSPanel* panel, id target, SEL ok, SEL cancel) {
    const CGFloat margin = 20;
    NSSize size = [[panel contentView] bounds].size;
    NSString* titles[] = {@"OK", dialogText(DIALOG_CANCEL)};
    NSString* keys[] = {@"\r", @"\e"};
    SEL actions[] = {ok, cancel};
    CGFloat right = size.width - margin;
    for (int index = 0; index < 2; ++index) {
        CGFloat width = dialogButtonWidth(titles[index]);
        dialogAddButton(panel, NSMakeRect(right - width, size.height - margin - 26, width, 26), titles[index],
                        keys[index], target, actions[index]);
        right -= width + 12;
    }
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
