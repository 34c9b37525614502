#pragma once

#import <Foundation/Foundation.h>

namespace Platform::Darwin {

/// The errno value behind an error of a file operation: its own, that of the error underneath, or the one
/// that says what its Cocoa code says. EIO for any other.
[[nodiscard]] int errnoOf(NSError* error);

}  // namespace Platform::Darwin
