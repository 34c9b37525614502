// The administrator dialog of a simulated Mac. Started by launchd, which it talks to on descriptor 3: the
// first packet says what to show, answers go back until one of them is good (launchd/AdministratorDialog.h).

#import <errno.h>
#import <objc/runtime.h>
#import <string.h>
#import <sys/socket.h>
#import <unistd.h>

#import "dialogs/DialogParts.h"

static const int kLaunchd = 3;
static const CGFloat kWidth = 500;
static const CGFloat kMargin = 20;
static const CGFloat kTextLeft = 104;
/// Room for a field's label.
static const CGFloat kNames = 110;
static const CGFloat kTallestText = 250;

@interface SecurityAgentDialog : NSObject {
    NSPanel* panel_;
    NSTextField* name_;
    NSTextField* password_;
    NSTextField* message_;
}
- (id)initWithApplication:(NSString*)application prompt:(NSString*)prompt user:(NSString*)user;
- (void)run;
@end

static void sendFields(NSArray* fields) {
    NSMutableData* packet = [NSMutableData data];
    for (NSUInteger index = 0; index < [fields count]; ++index) {
        if (index > 0) {
            [packet appendBytes:"" length:1];
        }
        [packet appendData:[[fields objectAtIndex:index] dataUsingEncoding:NSUTF8StringEncoding]];
    }
    send(kLaunchd, [packet bytes], [packet length], MSG_NOSIGNAL);
}

/// A caller's words may be in no encoding at all.
static NSString* textOf(const char* bytes, NSUInteger length) {
    NSString* text = [[NSString alloc] initWithBytes:bytes length:length encoding:NSUTF8StringEncoding];
    if (text == nil) {
        text = [[NSString alloc] initWithBytes:bytes length:length encoding:NSISOLatin1StringEncoding];
    }
    return [text autorelease];
}

/// The fields of the next packet; nil if launchd has hung up.
static NSArray* receiveFields(void) {
    char buffer[4096];
    ssize_t length = 0;
    do {
        length = recv(kLaunchd, buffer, sizeof buffer, 0);
    } while (length < 0 && errno == EINTR);
    if (length <= 0) {
        return nil;
    }
    NSMutableArray* fields = [NSMutableArray array];
    const char* end = buffer + length;
    for (const char* start = buffer; start <= end;) {
        const char* next = memchr(start, 0, end - start);
        next = next != NULL ? next : end;
        [fields addObject:textOf(start, next - start)];
        start = next + 1;
    }
    return fields;
}

@implementation SecurityAgentDialog

- (CGFloat)addTexts:(NSString*)application prompt:(NSString*)prompt {
    NSFont* bold = [NSFont boldSystemFontOfSize:13];
    NSFont* plain = [NSFont systemFontOfSize:12];
    CGFloat width = kWidth - kTextLeft - kMargin;
    CGFloat top = kMargin;
    NSString* texts[] = {[NSString stringWithFormat:dialogText(DIALOG_WANTS_CHANGES), application], prompt,
                         dialogText(DIALOG_ASKS_ADMINISTRATOR)};
    for (int index = 0; index < 3; ++index) {
        NSFont* font = index == 0 ? bold : plain;
        CGFloat height = MIN(dialogTextHeight(texts[index], font, width), kTallestText);
        if (panel_ != nil && height > 0) {
            dialogAddText(panel_, NSMakeRect(kTextLeft, top, width, height), texts[index], font);
        }
        top += height > 0 ? height + 8 : 0;
    }
    return top;
}

- (id)initWithApplication:(NSString*)application prompt:(NSString*)prompt user:(NSString*)user {
    if ((self = [super init]) == nil) {
        return nil;
    }
    CGFloat top = [self addTexts:application prompt:prompt] + 6;
    CGFloat height = top + 150;
    panel_ = dialogNewPanel(NSMakeSize(kWidth, height), @"SecurityAgent");
    [self addTexts:application prompt:prompt];
    dialogAddIcon(panel_, NSMakeRect(kMargin, kMargin, 68, 68), DialogIconLock);

    NSRect field = NSMakeRect(kTextLeft + kNames, top, kWidth - kTextLeft - kNames - kMargin, 24);
    dialogAddFieldName(panel_, field, kTextLeft, dialogText(DIALOG_NAME));
    name_ = dialogAddField(panel_, field, NO);
    [name_ setStringValue:user];
    field.origin.y += 32;
    dialogAddFieldName(panel_, field, kTextLeft, dialogText(DIALOG_PASSWORD));
    password_ = dialogAddField(panel_, field, YES);
    [name_ setNextKeyView:password_];
    [password_ setNextKeyView:name_];
    message_ = dialogAddText(panel_, NSMakeRect(kTextLeft, top + 62, kWidth - kTextLeft - kMargin, 20), @"",
                             [NSFont systemFontOfSize:11]);
    [message_ setAlignment:NSRightTextAlignment];
    [message_ setTextColor:[NSColor colorWithCalibratedRed:0.75 green:0.1 blue:0.1 alpha:1]];

    dialogAddAnswers(panel_, self, @selector(answer:), @selector(cancel:));
    return self;
}

- (void)dealloc {
    [panel_ release];
    [super dealloc];
}

- (void)answer:(id)sender {
    (void)sender;
    [panel_ makeFirstResponder:nil];
    sendFields([NSArray arrayWithObjects:@"answer", [name_ stringValue], [password_ stringValue], nil]);
    if (receiveFields() == nil) {
        [NSApp stopModal];
        return;
    }
    dialogRefuse(panel_, password_, message_, dialogText(DIALOG_WRONG_ADMINISTRATOR));
}

- (void)cancel:(id)sender {
    (void)sender;
    sendFields([NSArray arrayWithObject:@"cancel"]);
    [NSApp stopModal];
}

/// With the dialog on the screen, the person can be waited for.
- (void)isShown {
    sendFields([NSArray arrayWithObject:@"shown"]);
}

- (void)run {
    [self performSelector:@selector(isShown)
               withObject:nil
               afterDelay:0
                  inModes:[NSArray arrayWithObject:NSModalPanelRunLoopMode]];
    dialogRun(panel_, [[name_ stringValue] length] > 0 ? password_ : name_);
}

@end

/// Of the notification centres: one for this process alone. The usual ones start a server (gdnc), which would
/// outlive the dialog.
static id ownCenter(id self, SEL selector) {
    (void)self;
    (void)selector;
    return [NSNotificationCenter defaultCenter];
}

/// Of the services manager: it would make the dialog known to other programs, by files in the user's home
/// folder.
static id stayUnknown(id self, SEL selector) {
    (void)self;
    (void)selector;
    return nil;
}

static void replace(Method method, IMP implementation) {
    if (method != NULL) {
        method_setImplementation(method, implementation);
    }
}

static void secludeProcess(void) {
    replace(class_getClassMethod([NSDistributedNotificationCenter class], @selector(defaultCenter)),
            (IMP)ownCenter);
    replace(class_getInstanceMethod([NSWorkspace class], @selector(notificationCenter)), (IMP)ownCenter);
    replace(class_getInstanceMethod([NSWorkspace class], @selector(findApplications)), (IMP)stayUnknown);
    replace(class_getInstanceMethod(NSClassFromString(@"GSServicesManager"),
                                    @selector(registerAsServiceProvider)),
            (IMP)stayUnknown);
}

/// Plain windows without a window manager's help, and no icon for the program.
static void prepareApplication(void) {
    NSUserDefaults* defaults = [NSUserDefaults standardUserDefaults];
    [defaults
        registerDefaults:[NSDictionary dictionaryWithObjectsAndKeys:@"NO", @"GSX11HandlesWindowDecorations",
                                                                    @"NO", @"GSBackHandlesWindowDecorations",
                                                                    @"YES", @"GSSuppressAppIcon", nil]];
    [NSApplication sharedApplication];
    dialogChooseFonts();
    [NSApp finishLaunching];
}

int main(void) {
    NSAutoreleasePool* pool = [[NSAutoreleasePool alloc] init];
    secludeProcess();
    NSArray* texts = receiveFields();
    if ([texts count] != 3) {
        return 1;
    }
    prepareApplication();
    SecurityAgentDialog* dialog = [[SecurityAgentDialog alloc] initWithApplication:[texts objectAtIndex:0]
                                                                            prompt:[texts objectAtIndex:1]
                                                                              user:[texts objectAtIndex:2]];
    [dialog run];
    [dialog release];
    [pool release];
    return 0;
}
