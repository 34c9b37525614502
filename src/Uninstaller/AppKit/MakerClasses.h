#import <AppKit/AppKit.h>

// The two classes of the maker's closed frameworks that the program uses, loaded while the program runs. A
// framework that is absent or does not load is passed over. Main thread only.

#ifdef __cplusplus
extern "C" {
#endif

/// A modal alert of the QVSAlertFactory in NorvikCustomUI.framework below one of `folders` (the first that
/// loads), else one of the system; nil if the factory makes none. Its owner releases it; SNTRunAlert shows
/// it.
id SNTCopyAlert(NSArray* folders, NSString* buttonTitle, NSString* messageText, NSString* informativeText);

/// Shows an alert until it is answered.
void SNTRunAlert(id alert);

/// Makes a QVSParentalControlAuthorization of NorvikGuiCommon.framework below one of `folders`, which the
/// caller releases. NO if there is no such framework and so no lock; YES with `authorization` nil if the
/// class makes no object.
BOOL SNTMakeParentalControlAuthorization(NSArray* folders, id* authorization);

/// Whether the product's parental-control lock lets the user go on; NO for nil.
BOOL SNTParentalControlAuthorized(id authorization);

#ifdef __cplusplus
}
#endif
