// Loaded into the uninstaller by a test: writes, ten times a second, what the interface shows to the file
// that INTERFACE_SPY names. What cannot be seen from outside - which button is enabled, where it is - is read
// from the controls themselves; the program knows nothing of it.

#import <AppKit/AppKit.h>

@interface InterfaceSpy : NSObject
+ (void)watch:(NSNotification*)notification;
+ (void)write:(NSTimer*)timer;
@end

static NSArray* rectangle(NSRect frame) {
    // From the upper left corner of the screen, as a mouse counts.
    CGFloat height = [[NSScreen mainScreen] frame].size.height;
    return [NSArray arrayWithObjects:[NSNumber numberWithDouble:frame.origin.x],
                                     [NSNumber numberWithDouble:height - NSMaxY(frame)],
                                     [NSNumber numberWithDouble:frame.size.width],
                                     [NSNumber numberWithDouble:frame.size.height], nil];
}

static NSMutableDictionary* describe(NSView* view, NSString* kind) {
    NSMutableDictionary* facts = [NSMutableDictionary dictionary];
    NSRect inWindow = [view convertRect:[view bounds] toView:nil];
    inWindow.origin = [[view window] convertBaseToScreen:inWindow.origin];
    [facts setObject:kind forKey:@"kind"];
    [facts setObject:rectangle(inWindow) forKey:@"frame"];
    // A button may lie outside its window for the sake of its key.
    [facts setObject:[NSNumber numberWithBool:[view isHiddenOrHasHiddenAncestor] ||
                                              NSIsEmptyRect([view visibleRect])]
              forKey:@"hidden"];
    return facts;
}

/// The size that a text needs when laid out again in lines of this width.
static NSArray* roomFor(NSAttributedString* text, CGFloat width) {
    NSTextStorage* storage = [[NSTextStorage alloc] initWithAttributedString:text];
    NSLayoutManager* layout = [[NSLayoutManager alloc] init];
    NSTextContainer* container = [[NSTextContainer alloc] initWithContainerSize:NSMakeSize(width, 10000)];
    [container setLineFragmentPadding:0];
    [layout addTextContainer:container];
    [storage addLayoutManager:layout];
    [layout glyphRangeForTextContainer:container];
    NSRect used = [layout usedRectForTextContainer:container];
    [container release];
    [layout release];
    [storage release];
    return [NSArray arrayWithObjects:[NSNumber numberWithDouble:used.size.width],
                                     [NSNumber numberWithDouble:used.size.height], nil];
}

static void collect(NSView* view, NSMutableArray* controls) {
    NSMutableDictionary* facts = nil;
    // The system's alert shows its icon as a button without words.
    if ([view isKindOfClass:[NSButton class]] && [[(NSButton*)view title] length] > 0) {
        facts = describe(view, @"button");
        [facts setObject:[(NSButton*)view title] forKey:@"text"];
        [facts setObject:[NSNumber numberWithBool:[(NSButton*)view isEnabled]] forKey:@"enabled"];
        [facts setObject:[(NSButton*)view keyEquivalent] forKey:@"key"];
        [facts setObject:roomFor([(NSButton*)view attributedTitle], 10000) forKey:@"needs"];
    } else if ([view isKindOfClass:[NSTextField class]]) {
        facts = describe(view, @"text");
        [facts setObject:[(NSTextField*)view stringValue] forKey:@"text"];
        // A text field keeps two points free on either side of its text.
        CGFloat width = [[(NSTextField*)view cell] wraps] ? [view bounds].size.width - 4 : 10000;
        [facts setObject:roomFor([(NSTextField*)view attributedStringValue], width) forKey:@"needs"];
    } else if ([view isKindOfClass:[NSProgressIndicator class]]) {
        facts = describe(view, @"progress");
        [facts setObject:[NSNumber numberWithDouble:[(NSProgressIndicator*)view doubleValue]]
                  forKey:@"value"];
        [facts setObject:[NSNumber numberWithBool:[(NSProgressIndicator*)view isIndeterminate]]
                  forKey:@"moves"];
    } else if ([NSStringFromClass([view class]) isEqualToString:@"SNTCheckMark"]) {
        facts = describe(view, @"checkMark");
    }
    if (facts != nil) {
        [controls addObject:facts];
    }
    for (NSUInteger index = 0; index < [[view subviews] count]; ++index) {
        collect([[view subviews] objectAtIndex:index], controls);
    }
}

@implementation InterfaceSpy

+ (void)load {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    [[NSNotificationCenter defaultCenter] addObserver:self
                                             selector:@selector(watch:)
                                                 name:NSApplicationDidFinishLaunchingNotification
                                               object:nil];
    [pool release];
}

+ (void)watch:(NSNotification*)notification {
    (void)notification;
    NSTimer* timer = [NSTimer timerWithTimeInterval:0.1
                                             target:self
                                           selector:@selector(write:)
                                           userInfo:nil
                                            repeats:YES];
    NSRunLoop* loop = [NSRunLoop currentRunLoop];
    [loop addTimer:timer forMode:NSDefaultRunLoopMode];
    [loop addTimer:timer forMode:NSModalPanelRunLoopMode];
    [loop addTimer:timer forMode:NSEventTrackingRunLoopMode];
}

+ (void)write:(NSTimer*)timer {
    (void)timer;
    NSString* file = [[[NSProcessInfo processInfo] environment] objectForKey:@"INTERFACE_SPY"];
    NSMutableArray* windows = [NSMutableArray array];
    NSEnumerator* each = [[NSApp windows] objectEnumerator];
    NSWindow* window;
    while ((window = [each nextObject]) != nil) {
        NSMutableArray* controls = [NSMutableArray array];
        if (![window isVisible] || [window contentView] == nil || [window level] == NSMainMenuWindowLevel) {
            continue;
        }
        collect([window contentView], controls);
        NSView* content = [window contentView];
        NSRect inside = [content convertRect:[content bounds] toView:nil];
        inside.origin = [window convertBaseToScreen:inside.origin];
        NSMutableDictionary* facts = [NSMutableDictionary
            dictionaryWithObjectsAndKeys:[window title], @"title", rectangle([window frame]), @"frame",
                                         rectangle(inside), @"content", controls, @"controls", nil];
        NSButton* closeBox = [window standardWindowButton:NSWindowCloseButton];
        if (closeBox != nil) {
            [facts setObject:[describe(closeBox, @"closeBox") objectForKey:@"frame"] forKey:@"closeBox"];
        }
        [windows addObject:facts];
    }
    NSData* json = [NSJSONSerialization dataWithJSONObject:[NSDictionary dictionaryWithObject:windows
                                                                                       forKey:@"windows"]
                                                   options:0
                                                     error:NULL];
    [json writeToFile:file atomically:YES];
}

@end
