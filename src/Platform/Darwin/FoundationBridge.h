#pragma once

#import <Foundation/Foundation.h>

#include <optional>
#include <string>
#include <utility>

#include "Base/URL.h"
#include "Platform/Foundation/FoundationStrings.h"

/// For the Objective-C++ files of this room only: conversions between Foundation's values and the program's.
namespace Platform::Darwin {

/// An autorelease pool from here to the end of the scope. Every operation of an adapter has one: it may be
/// called on any thread, also on one that has none.
class Pool {
  public:
    Pool() : pool_([[NSAutoreleasePool alloc] init]) {}
    Pool(const Pool&) = delete;
    Pool& operator=(const Pool&) = delete;
    ~Pool() { [pool_ release]; }

  private:
    NSAutoreleasePool* pool_;
};

/// Owns one count of an Objective-C object; nil stands for none. May go on any thread: the last release runs
/// code of the object, which may leave something to a pool.
template <class Object>
class Retained {
  public:
    Retained() = default;
    /// Takes over the count that the caller owns (alloc, copy, create).
    [[nodiscard]] static Retained adopt(Object object) { return Retained(object); }
    /// Takes an additional count.
    [[nodiscard]] static Retained of(Object object) { return Retained([object retain]); }
    Retained(Retained&& other) noexcept : object_(std::exchange(other.object_, nil)) {}
    Retained& operator=(Retained&& other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Retained() {
        if (object_ != nil) {
            const Pool pool;
            [object_ release];
        }
    }

    [[nodiscard]] Object get() const { return object_; }
    /// Gives the count to the caller. For an object whose release may raise: out of the destructor here that
    /// would end the process.
    [[nodiscard]] Object yield() { return std::exchange(object_, nil); }
    explicit operator bool() const { return object_ != nil; }

  private:
    explicit Retained(Object object) : object_(object) {}

    Object object_ = nil;
};

using Foundation::foundationString;
using Foundation::text;

/// The path as Foundation takes it, autoreleased; nil if it is not valid UTF-8 or has a NUL byte in it: the
/// file systems of a Mac hold no such name.
[[nodiscard]] NSString* foundationPath(const std::string& path);
/// The URL of an item, autoreleased; nil as above.
[[nodiscard]] NSURL* foundationURL(const Base::URL& url, bool isFolder);
/// The file URL's path as a URL; nothing for nil or a URL without a path.
[[nodiscard]] std::optional<Base::URL> fileURL(NSURL* url);

}  // namespace Platform::Darwin
