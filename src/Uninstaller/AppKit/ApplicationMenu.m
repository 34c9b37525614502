#import "Uninstaller/AppKit/ApplicationMenu.h"

#import "Uninstaller/AppKit/InterfaceDelegate.h"

@implementation SNTApplicationMenu

static NSMenuItem* newItem(NSString* title, SEL action, NSString* keyEquivalent, id target) {
    NSMenuItem* item = [[NSMenuItem alloc] initWithTitle:title action:action keyEquivalent:keyEquivalent];
    [item setTarget:target];
    return item;
}

- (id)initWithName:(NSString*)name
        aboutTitle:(NSString*)aboutTitle
         hideTitle:(NSString*)hideTitle
         quitTitle:(NSString*)quitTitle
       aboutTarget:(id)aboutTarget {
    self = [super init];
    if (self == nil) {
        return nil;
    }
    aboutItem_ = newItem(aboutTitle, @selector(showAboutPanel:), @"", aboutTarget);
    hideItem_ = newItem(hideTitle, @selector(hide:), @"h", NSApp);
    quitItem_ = newItem(quitTitle, @selector(terminate:), @"q", NSApp);

    NSMenu* applicationMenu = [[NSMenu alloc] initWithTitle:name];
    [applicationMenu addItem:aboutItem_];
    [applicationMenu addItem:[NSMenuItem separatorItem]];
    [applicationMenu addItem:hideItem_];
    [applicationMenu addItem:[NSMenuItem separatorItem]];
    [applicationMenu addItem:quitItem_];

    mainMenu_ = [[NSMenu alloc] initWithTitle:name];
    NSMenuItem* applicationItem = newItem(name, NULL, @"", nil);
    [mainMenu_ addItem:applicationItem];
    [mainMenu_ setSubmenu:applicationMenu forItem:applicationItem];
    [applicationItem release];
    [applicationMenu release];
    return self;
}

- (void)dealloc {
    [mainMenu_ release];
    [aboutItem_ release];
    [hideItem_ release];
    [quitItem_ release];
    [super dealloc];
}

- (NSMenu*)mainMenu {
    return mainMenu_;
}

- (NSMenuItem*)aboutItem {
    return aboutItem_;
}

- (NSMenuItem*)hideItem {
    return hideItem_;
}

- (NSMenuItem*)quitItem {
    return quitItem_;
}

@end
