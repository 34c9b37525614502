#import <AppKit/AppKit.h>

// Building blocks of the simulated Mac's dialogs. A part's class belongs to the library or program that it is
// compiled into (DIALOG_OWNER): two libraries in one process may both have it.

#define DIALOG_JOINED_(owner, name) owner##name
#define DIALOG_JOINED(owner, name) DIALOG_JOINED_(owner, name)
#define DIALOG_CLASS(name) DIALOG_JOINED(DIALOG_OWNER, name)

/// The texts of the dialogs, in English.
#define DIALOG_WANTS_CHANGES @"%@ wants to make changes."
#define DIALOG_ASKS_ADMINISTRATOR @"Enter an administrator\u2019s name and password to allow this."
#define DIALOG_NAME @"Name:"
#define DIALOG_PASSWORD @"Password:"
#define DIALOG_CANCEL @"Cancel"
#define DIALOG_WRONG_ADMINISTRATOR @"The name or password is not correct."
#define DIALOG_LOCK_IS_ON @"Sentrel parental control is on."
#define DIALOG_ASKS_PASSWORD @"Enter its password to continue."
#define DIALOG_WRONG_PASSWORD @"The password is not correct."

/// One of these in the user's first known language, else unchanged.
NSString* dialogText(NSString* english);

/// Makes the dialogs of this process use a font that has the user's letters.
void dialogChooseFonts(void);

typedef enum { DialogIconLock, DialogIconShield } DialogIcon;

/// A centred panel of that size without a title bar. Its content view counts from the top. `title` is for
/// window lists only. Owned by the caller.
NSPanel* dialogNewPanel(NSSize size, NSString* title);

/// Adds a text that is wrapped to the width of `frame`.
NSTextField* dialogAddText(NSPanel* panel, NSRect frame, NSString* text, NSFont* font);
/// The height that the text needs in that width.
CGFloat dialogTextHeight(NSString* text, NSFont* font, CGFloat width);
/// Adds a label to the left of the field at `fieldFrame`.
void dialogAddFieldName(NSPanel* panel, NSRect fieldFrame, CGFloat left, NSString* name);
NSTextField* dialogAddField(NSPanel* panel, NSRect frame, BOOL isSecure);
/// Adds a button that `key` also presses; the return key's button looks like the default one.
NSButton* dialogAddButton(NSPanel* panel, NSRect frame, NSString* title, NSString* key, id target,
                          SEL action);
/// Adds OK and Cancel in the lower right corner, with their keys.
void dialogAddAnswers(NSPanel* panel, id target, SEL ok, SEL cancel);
void dialogAddIcon(NSPanel* panel, NSRect frame, DialogIcon icon);

/// The width of a button with that title.
CGFloat dialogButtonWidth(NSString* title);

/// Shows the panel in front of everything, with the cursor in `field` (may be nil), until somebody stops the
/// modal session. Returns its code; the panel is gone then.
NSInteger dialogRun(NSPanel* panel, NSTextField* field);
/// Rejects an answer: empties the field, shows `text` in `message`, and shakes the panel.
void dialogRefuse(NSPanel* panel, NSTextField* field, NSTextField* message, NSString* text);
