#import "Uninstaller/AppKit/GNUstep/Panels.h"

static const CGFloat kMargin = 20;
static const CGFloat kIconSide = 64;
static const CGFloat kAlertColumn = 300;
static const CGFloat kAboutWidth = 280;

static NSTextField* addText(NSView* view, NSString* text, NSFont* font, CGFloat width) {
    NSTextField* field = [[[NSTextField alloc] initWithFrame:NSZeroRect] autorelease];
    [field setEditable:NO];
    [field setSelectable:NO];
    [field setBezeled:NO];
    [field setDrawsBackground:NO];
    [field setFont:font];
    [[field cell] setWraps:YES];
    [field setStringValue:text];
    NSRect bounds =
        [[field attributedStringValue] boundingRectWithSize:NSMakeSize(width - 4, 10000)
                                                    options:NSStringDrawingUsesLineFragmentOrigin];
    [field setFrame:NSMakeRect(0, 0, width, [text length] == 0 ? 0 : ceil(NSHeight(bounds)))];
    [view addSubview:field];
    return field;
}

static void addIcon(NSView* view, NSImage* icon, NSPoint origin) {
    NSRect frame = NSMakeRect(origin.x, origin.y, kIconSide, kIconSide);
    NSImageView* iconView = [[[NSImageView alloc] initWithFrame:frame] autorelease];
    [iconView setImageScaling:NSImageScaleProportionallyUpOrDown];
    [iconView setImage:icon];
    [view addSubview:iconView];
}

static NSPanel* newPanel(NSString* title, NSUInteger style) {
    NSPanel* panel = [[NSPanel alloc] initWithContentRect:NSMakeRect(0, 0, kAboutWidth, kAboutWidth)
                                                styleMask:style
                                                  backing:NSBackingStoreBuffered
                                                    defer:NO];
    [panel setReleasedWhenClosed:NO];
    [panel setTitle:title];
    return panel;
}

/// Adds an invisible button, as a second key for the visible one.
static void addKey(NSView* view, NSString* key, id target, SEL action) {
    NSButton* button = [[[NSButton alloc] initWithFrame:NSMakeRect(-10, -10, 1, 1)] autorelease];
    [button setKeyEquivalent:key];
    [button setTarget:target];
    [button setAction:action];
    [view addSubview:button];
}

@implementation SNTAlertPanel

- (NSButton*)addButton:(NSString*)title {
    NSButton* button = [[[NSButton alloc] initWithFrame:NSZeroRect] autorelease];
    [button setBezelStyle:NSRoundedBezelStyle];
    [button setFont:[NSFont systemFontOfSize:13]];
    [button setTitle:title];
    [button setTarget:self];
    [button setAction:@selector(answer:)];
    [button sizeToFit];
    [[panel_ contentView] addSubview:button];
    [panel_ setDefaultButtonCell:[button cell]];
    addKey([panel_ contentView], @"\033", self, @selector(answer:));
    return button;
}

- (id)initWithButtonTitle:(NSString*)buttonTitle
              messageText:(NSString*)messageText
          informativeText:(NSString*)informativeText {
    self = [super init];
    if (self == nil) {
        return nil;
    }
    panel_ = newPanel([[NSProcessInfo processInfo] processName], NSTitledWindowMask);
    [panel_ setLevel:NSModalPanelWindowLevel];
    [panel_ setHidesOnDeactivate:NO];
    NSView* content = [panel_ contentView];
    NSTextField* message = addText(content, messageText, [NSFont boldSystemFontOfSize:14], kAlertColumn);
    NSTextField* informative = addText(content, informativeText, [NSFont systemFontOfSize:13], kAlertColumn);
    NSButton* button = [self addButton:buttonTitle];

    CGFloat left = kMargin + kIconSide + 16;
    CGFloat gap = NSHeight([informative frame]) > 0 ? 8 : 0;
    CGFloat texts = NSHeight([message frame]) + gap + NSHeight([informative frame]);
    CGFloat buttonWidth = fmax(88, NSWidth([button frame]));
    NSSize size = NSMakeSize(fmax(left + kAlertColumn, buttonWidth + kMargin) + kMargin,
                             kMargin + fmax(kIconSide, texts) + kMargin + NSHeight([button frame]) + kMargin);
    [panel_ setContentSize:size];

    CGFloat top = size.height - kMargin;
    addIcon(content, [NSApp applicationIconImage], NSMakePoint(kMargin, top - kIconSide));
    // A short text is centred beside the icon.
    top -= fmax(0, floor((kIconSide - texts) / 2));
    [message setFrameOrigin:NSMakePoint(left, top - NSHeight([message frame]))];
    [informative setFrameOrigin:NSMakePoint(left, top - texts)];
    [button setFrame:NSMakeRect(size.width - kMargin - buttonWidth, kMargin, buttonWidth,
                                NSHeight([button frame]))];
    return self;
}

- (void)dealloc {
    [panel_ release];
    [super dealloc];
}

- (void)answer:(id)sender {
    (void)sender;
    [NSApp stopModal];
}

- (NSInteger)runModal {
    [panel_ center];
    NSInteger answer = [NSApp runModalForWindow:panel_];
    [panel_ orderOut:nil];
    return answer;
}

@end

@implementation SNTAboutPanel

- (id)initWithName:(NSString*)name version:(NSString*)version icon:(NSImage*)icon {
    self = [super init];
    if (self == nil) {
        return nil;
    }
    panel_ = newPanel(@"", NSTitledWindowMask | NSClosableWindowMask);
    NSView* content = [panel_ contentView];
    CGFloat column = kAboutWidth - 2 * kMargin;
    NSTextField* nameField = addText(content, name, [NSFont boldSystemFontOfSize:14], column);
    NSTextField* versionField = addText(content, version, [NSFont systemFontOfSize:11], column);
    [nameField setAlignment:NSCenterTextAlignment];
    [versionField setAlignment:NSCenterTextAlignment];
    [versionField setTextColor:[NSColor secondaryLabelColor]];

    CGFloat height =
        kMargin + NSHeight([versionField frame]) + 6 + NSHeight([nameField frame]) + 12 + kIconSide + 12;
    [panel_ setContentSize:NSMakeSize(kAboutWidth, height)];
    [versionField setFrameOrigin:NSMakePoint(kMargin, kMargin)];
    CGFloat bottom = NSMaxY([versionField frame]) + 6;
    [nameField setFrameOrigin:NSMakePoint(kMargin, bottom)];
    bottom = NSMaxY([nameField frame]) + 12;
    addIcon(content, icon, NSMakePoint(floor((kAboutWidth - kIconSide) / 2), bottom));
    addKey(content, @"\033", panel_, @selector(performClose:));
    [panel_ center];
    return self;
}

- (void)dealloc {
    [panel_ release];
    [super dealloc];
}

- (void)show {
    [panel_ makeKeyAndOrderFront:nil];
}

@end
