#import <AppKit/AppKit.h>

/// The uninstaller's window, laid out in code: the icon, a headline, the label, the progress bar with the
/// description under it, and the two buttons. Once the bar is full, the icon carries a check mark. Sizes
/// follow the texts; the window grows with them and keeps its upper left corner, but never shrinks, so that
/// nothing jumps when a text becomes shorter.
///
/// Made once and kept for the life of the process. Main thread only.
@interface SNTUninstallerInterface : NSObject {
    NSWindow* window_;
    NSImageView* iconView_;
    NSView* checkMark_;
    NSTextField* headline_;
    NSTextField* label_;
    NSProgressIndicator* progressIndicator_;
    NSTextField* progressDescriptionLabel_;
    NSButton* uninstallButton_;
    NSButton* cancelButton_;
    NSSize contentSize_;
}

/// `icon` may be nil.
- (id)initWithIcon:(NSImage*)icon;

- (NSWindow*)window;
- (NSTextField*)headline;
- (NSTextField*)label;
- (NSProgressIndicator*)progressIndicator;
/// Initially hidden.
- (NSView*)checkMark;
- (NSTextField*)progressDescriptionLabel;
/// The default button: Return presses it.
- (NSButton*)uninstallButton;
/// Escape presses it.
- (NSButton*)cancelButton;

/// Lays everything out again. Call this after a text has changed.
- (void)layOut;
/// Centres the window on the screen and shows it.
- (void)show;

@end
