#import <AppKit/AppKit.h>

#ifdef __cplusplus
namespace Uninstall_Sentrel {
class ApplicationProgram;
}
#endif

/// Delegate of the application and of the window: passes every question and event of AppKit to the program.
///
/// Made once and kept for the life of the process. Main thread only.
@interface SNTInterfaceDelegate : NSObject <NSApplicationDelegate, NSWindowDelegate> {
    void* program_;
    NSImage* icon_;
    NSString* name_;
}

#ifdef __cplusplus
/// `program` outlives the delegate; `name` is the application's, `icon` may be nil.
- (id)initWithProgram:(Uninstall_Sentrel::ApplicationProgram*)program
                 name:(NSString*)name
                 icon:(NSImage*)icon;
#endif

- (void)showAboutPanel:(id)sender;

@end
