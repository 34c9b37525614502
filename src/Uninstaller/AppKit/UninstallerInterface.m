#import "Uninstaller/AppKit/UninstallerInterface.h"

#import "Uninstaller/AppKit/System.h"

static const CGFloat kMargin = 20;
static const CGFloat kContentWidth = 500;
static const CGFloat kIconSide = 64;
static const CGFloat kIconGap = 16;
static const CGFloat kHeadlineGap = 8;
static const CGFloat kProgressGap = 16;
static const CGFloat kDescriptionGap = 6;
static const CGFloat kButtonsGap = 20;
static const CGFloat kButtonDistance = 12;
static const CGFloat kButtonMinimumWidth = 88;
static const CGFloat kProgressHeight = 20;
static const CGFloat kUnlimited = 10000;
static const CGFloat kCheckMarkSide = 26;

/// A white check mark on a green disc.
@interface SNTCheckMark : NSView
@end

@implementation SNTCheckMark

- (void)drawRect:(NSRect)dirty {
    (void)dirty;
    NSRect bounds = [self bounds];
    CGFloat side = NSWidth(bounds);
    [[NSColor whiteColor] set];
    [[NSBezierPath bezierPathWithOvalInRect:bounds] fill];
    [[NSColor colorWithCalibratedRed:0.16 green:0.64 blue:0.29 alpha:1] set];
    [[NSBezierPath bezierPathWithOvalInRect:NSInsetRect(bounds, 2, 2)] fill];
    NSBezierPath* mark = [NSBezierPath bezierPath];
    [mark moveToPoint:NSMakePoint(side * 0.28, side * 0.51)];
    [mark lineToPoint:NSMakePoint(side * 0.44, side * 0.34)];
    [mark lineToPoint:NSMakePoint(side * 0.73, side * 0.67)];
    [mark setLineWidth:side * 0.11];
    [mark setLineCapStyle:NSRoundLineCapStyle];
    [mark setLineJoinStyle:NSRoundLineJoinStyle];
    [[NSColor whiteColor] set];
    [mark stroke];
}

@end

@implementation SNTUninstallerInterface

static NSTextField* newText(NSFont* font) {
    NSTextField* field = [[NSTextField alloc] initWithFrame:NSZeroRect];
    [field setEditable:NO];
    [field setSelectable:NO];
    [field setBezeled:NO];
    [field setBordered:NO];
    [field setDrawsBackground:NO];
    [field setFont:font];
    return field;
}

static NSTextField* newWrappingText(NSFont* font) {
    NSTextField* field = newText(font);
    [[field cell] setWraps:YES];
    [[field cell] setLineBreakMode:NSLineBreakByWordWrapping];
    return field;
}

static NSButton* newButton(NSString* keyEquivalent) {
    NSButton* button = [[NSButton alloc] initWithFrame:NSZeroRect];
    [button setButtonType:NSMomentaryPushInButton];
    [button setBezelStyle:NSRoundedBezelStyle];
    [button setFont:[NSFont systemFontOfSize:13]];
    [button setKeyEquivalent:keyEquivalent];
    return button;
}

static CGFloat heightOfText(NSTextField* field, CGFloat width) {
    // A text field keeps two points free on either side of its text.
    NSSize available = NSMakeSize(width - 4, kUnlimited);
    NSRect bounds =
        [[field attributedStringValue] boundingRectWithSize:available
                                                    options:NSStringDrawingUsesLineFragmentOrigin];
    return ceil(NSHeight(bounds));
}

/// One line's height, whatever the text; an empty text has none.
static CGFloat heightOfLine(NSTextField* field) {
    NSFont* font = [field font];
    return ceil([font ascender] - [font descender]) + 2;
}

static CGFloat widthOfButton(NSButton* button) {
    return fmax(kButtonMinimumWidth, ceil(SNTVisibleSizeThatFits(button).width));
}

- (id)initWithIcon:(NSImage*)icon {
    self = [super init];
    if (self == nil) {
        return nil;
    }
    window_ = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, kContentWidth, kContentWidth / 2)
                                          styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                                            backing:NSBackingStoreBuffered
                                              defer:NO];
    [window_ setReleasedWhenClosed:NO];

    iconView_ = [[NSImageView alloc] initWithFrame:NSZeroRect];
    [iconView_ setImageScaling:NSImageScaleProportionallyUpOrDown];
    [iconView_ setImage:icon];
    checkMark_ = [[SNTCheckMark alloc] initWithFrame:NSZeroRect];
    [checkMark_ setHidden:YES];
    headline_ = newWrappingText([NSFont boldSystemFontOfSize:15]);
    label_ = newWrappingText([NSFont systemFontOfSize:13]);

    progressIndicator_ = [[NSProgressIndicator alloc] initWithFrame:NSZeroRect];
    [progressIndicator_ setStyle:NSProgressIndicatorBarStyle];
    [progressIndicator_ setIndeterminate:NO];
    [progressIndicator_ setMinValue:0];
    [progressIndicator_ setMaxValue:100];
    progressDescriptionLabel_ = newText([NSFont systemFontOfSize:11]);
    [progressDescriptionLabel_ setTextColor:SNTSecondaryTextColor()];
    [[progressDescriptionLabel_ cell] setLineBreakMode:NSLineBreakByTruncatingMiddle];

    uninstallButton_ = newButton(@"\r");
    cancelButton_ = newButton(@"\033");
    [window_ setDefaultButtonCell:[uninstallButton_ cell]];

    // The check mark lies over the icon.
    NSView* views[] = {iconView_,     checkMark_,         headline_,
                       label_,        progressIndicator_, progressDescriptionLabel_,
                       cancelButton_, uninstallButton_};
    for (size_t index = 0; index < sizeof views / sizeof views[0]; ++index) {
        [[window_ contentView] addSubview:views[index]];
    }
    return self;
}

- (void)dealloc {
    [window_ release];
    [iconView_ release];
    [checkMark_ release];
    [headline_ release];
    [label_ release];
    [progressIndicator_ release];
    [progressDescriptionLabel_ release];
    [uninstallButton_ release];
    [cancelButton_ release];
    [super dealloc];
}

- (NSWindow*)window {
    return window_;
}

- (NSTextField*)headline {
    return headline_;
}

- (NSTextField*)label {
    return label_;
}

- (NSProgressIndicator*)progressIndicator {
    return progressIndicator_;
}

- (NSView*)checkMark {
    return checkMark_;
}

- (NSTextField*)progressDescriptionLabel {
    return progressDescriptionLabel_;
}

- (NSButton*)uninstallButton {
    return uninstallButton_;
}

- (NSButton*)cancelButton {
    return cancelButton_;
}

- (NSSize)sizeThatFits {
    CGFloat buttons = widthOfButton(cancelButton_) + kButtonDistance + widthOfButton(uninstallButton_);
    CGFloat width = fmax(kContentWidth, buttons + 2 * kMargin);
    CGFloat column = width - 2 * kMargin - kIconSide - kIconGap;
    CGFloat texts = heightOfText(headline_, column) + kHeadlineGap + heightOfText(label_, column);
    CGFloat progress = kProgressHeight + kDescriptionGap + heightOfLine(progressDescriptionLabel_);
    CGFloat buttonHeight = ceil(SNTVisibleSizeThatFits(uninstallButton_).height);
    CGFloat height =
        kMargin + fmax(kIconSide, texts) + kProgressGap + progress + kButtonsGap + buttonHeight + kMargin;
    return NSMakeSize(width, height);
}

- (void)growWindow {
    NSSize needed = [self sizeThatFits];
    NSSize size =
        NSMakeSize(fmax(contentSize_.width, needed.width), fmax(contentSize_.height, needed.height));
    if (NSEqualSizes(size, contentSize_)) {
        return;
    }
    NSRect frame = [window_ frame];
    NSRect grown = [window_ frameRectForContentRect:NSMakeRect(0, 0, size.width, size.height)];
    grown.origin.x = NSMinX(frame);
    grown.origin.y = NSMaxY(frame) - NSHeight(grown);
    contentSize_ = size;
    [window_ setFrame:grown display:[window_ isVisible]];
}

- (void)placeButtons {
    NSSize size = SNTVisibleSizeThatFits(uninstallButton_);
    CGFloat height = ceil(size.height);
    CGFloat right = contentSize_.width - kMargin;
    NSButton* buttons[] = {uninstallButton_, cancelButton_};
    for (size_t index = 0; index < sizeof buttons / sizeof buttons[0]; ++index) {
        CGFloat width = widthOfButton(buttons[index]);
        NSRect visible = NSMakeRect(right - width, kMargin, width, height);
        [buttons[index] setFrame:SNTFrameForVisibleRect(buttons[index], visible)];
        right -= width + kButtonDistance;
    }
}

- (void)layOut {
    [self growWindow];
    [self placeButtons];

    CGFloat top = contentSize_.height - kMargin;
    CGFloat left = kMargin + kIconSide + kIconGap;
    CGFloat column = contentSize_.width - kMargin - left;
    [iconView_ setFrame:NSMakeRect(kMargin, top - kIconSide, kIconSide, kIconSide)];
    [checkMark_ setFrame:NSMakeRect(kMargin + kIconSide - kCheckMarkSide, top - kIconSide, kCheckMarkSide,
                                    kCheckMarkSide)];

    CGFloat height = heightOfText(headline_, column);
    [headline_ setFrame:NSMakeRect(left, top - height, column, height)];
    top -= height + kHeadlineGap;
    height = heightOfText(label_, column);
    [label_ setFrame:NSMakeRect(left, top - height, column, height)];

    height = heightOfLine(progressDescriptionLabel_);
    CGFloat bottom = kMargin + ceil(SNTVisibleSizeThatFits(uninstallButton_).height) + kButtonsGap;
    [progressDescriptionLabel_ setFrame:NSMakeRect(left, bottom, column, height)];
    bottom += height + kDescriptionGap;
    NSRect bar = NSMakeRect(left, bottom, column, kProgressHeight);
    [progressIndicator_ setFrame:SNTFrameForVisibleRect(progressIndicator_, bar)];
    [[window_ contentView] setNeedsDisplay:YES];
}

- (void)show {
    [self layOut];
    [window_ center];
    [window_ makeKeyAndOrderFront:nil];
}

@end
