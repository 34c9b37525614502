// Not part of the product: what scripts/check-macos.sh has to complain about.
#import <Foundation/Foundation.h>

NSString* faulty(NSString* text) {
    return [text undeclaredOperation];
}
