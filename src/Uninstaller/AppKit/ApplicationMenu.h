#import <AppKit/AppKit.h>

/// The main menu: the application menu with About, Hide (Command-H) and Quit (Command-Q). The titles are
/// complete.
///
/// Made once and kept for the life of the process. Main thread only.
@interface SNTApplicationMenu : NSObject {
    NSMenu* mainMenu_;
    NSMenuItem* aboutItem_;
    NSMenuItem* hideItem_;
    NSMenuItem* quitItem_;
}

/// About sends showAboutPanel: to `aboutTarget`, which is not retained.
- (id)initWithName:(NSString*)name
        aboutTitle:(NSString*)aboutTitle
         hideTitle:(NSString*)hideTitle
         quitTitle:(NSString*)quitTitle
       aboutTarget:(id)aboutTarget;

- (NSMenu*)mainMenu;
- (NSMenuItem*)aboutItem;
- (NSMenuItem*)hideItem;
- (NSMenuItem*)quitItem;

@end
