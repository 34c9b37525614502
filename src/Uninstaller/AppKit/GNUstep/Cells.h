#import <AppKit/AppKit.h>

// What GNUstep's cells draw differently from those of the Mac.

/// Writes the default button's title in white.
@interface SNTButtonCell : NSButtonCell {
    int unused_;
}
@end

/// Shortens a text that does not fit into its line where the line break mode says so, with an ellipsis.
@interface SNTTextFieldCell : NSTextFieldCell {
    int unused_;
}
@end

#ifdef __cplusplus
extern "C" {
#endif

/// Has all buttons and text fields that are made from now on use these cells.
void SNTUseCells(void);

#ifdef __cplusplus
}
#endif
