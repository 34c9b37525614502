#import <AppKit/AppKit.h>

// What the dialogs of the simulated Mac are made of. A part's class belongs to the library or program that it
// is compiled into (DIALOG_OWNER): two libraries in one process may both have it.

#define DIALOG_JOINED_(owner, name) owner##name
#define DIALOG_JOINED(owner, name) DIALOG_JOINED_(owner, name)
#define DIALOG_CLASS(name) DIALOG_JOINED(DIALOG_OWNER, name)

typedef enum { DialogIconLock, DialogIconShield } DialogIcon;

/// A centred panel of that size without a title bar. Its content view counts from the top. `title` is for
/// window lists only. Owned by the caller.
NSPanel* dialogNewPanel(NSSize size, NSString* title);

/// Adds a text that is wrapped to the width of `frame`.
NSTextField* dialogAddText(NSPanel* panel, NSRect frame, NSString* text, NSFont* font);
/// The height that the text needs in that width.
CGFloat dialogTextHeight(NSString* text, NSFont* font, CGFloat width);
/// Adds a text that names the field at `fieldFrame`, to its left.
void dialogAddFieldName(NSPanel* panel, NSRect fieldFrame, CGFloat left, NSString* name);
NSTextField* dialogAddField(NSPanel* panel, NSRect frame, BOOL isSecure);
/// Adds a button that is pressed with `key` too; that of the return key looks like the one to press.
NSButton* dialogAddButton(NSPanel* panel, NSRect frame, NSString* title, NSString* key, id target,
                          SEL action);
void dialogAddIcon(NSPanel* panel, NSRect frame, DialogIcon icon);

/// The width of a button with that title.
CGFloat dialogButtonWidth(NSString* title);

/// Shows the panel in front of everything, with the cursor in `field` (may be nil), until somebody stops the
/// modal session. Returns that one's code; the panel is gone then.
NSInteger dialogRun(NSPanel* panel, NSTextField* field);
/// Empties the field, says `text` in `message`, and shakes the panel: that was wrong.
void dialogRefuse(NSPanel* panel, NSTextField* field, NSTextField* message, NSString* text);
