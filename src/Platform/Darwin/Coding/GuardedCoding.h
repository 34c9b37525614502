#pragma once

#import <Foundation/Foundation.h>

#ifdef __cplusplus
extern "C" {
#endif

/// What a coder may raise an exception at, behind a plain face: nothing comes out of these but their result.
///
/// Both read one key. When that fails - the coder raises, or keeps an error instead - they return nil or NO
/// and set `fault` to a sentence of the coder's, autoreleased; `fault` is untouched otherwise. A key that is
/// absent or holds nil is no failure.

/// The object under `key`, of one of `classes` as far as the coder checks that: a caller checks again.
id PlatformDarwinDecodeObject(NSCoder* coder, NSSet* classes, NSString* key, NSString** fault);
/// The inline boolean or number under `key`.
BOOL PlatformDarwinDecodeBool(NSCoder* coder, NSString* key, NSString** fault);

#ifdef __cplusplus
}
#endif
