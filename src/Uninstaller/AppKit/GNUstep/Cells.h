#import <AppKit/AppKit.h>

// Cells that draw as those of the Mac do, where GNUstep's own differ.

/// Writes the default button's title in white.
@interface SNTButtonCell : NSButtonCell {
    int unused_;
}
@end

/// Truncates a text that does not fit into its line with an ellipsis, where the line break mode asks for it.
@interface SNTTextFieldCell : NSTextFieldCell {
    int unused_;
}
@end

#ifdef __cplusplus
extern "C" {
#endif

/// Makes all buttons and text fields created from now on use these cells.
void SNTUseCells(void);

#ifdef __cplusplus
}
#endif
