// The conversions between Foundation's values and the program's.
#include <gtest/gtest.h>

#include "Platform/Darwin/FoundationBridge.h"
#include "Platform/Darwin/FoundationError.h"
#include "Platform/Foundation/ExceptionGuard.h"

/// GNUstep makes up a reason where there is none.
@interface ReasonlessException : NSException
@end

@implementation ReasonlessException

- (NSString*)reason {
    return nil;
}

@end

namespace Platform::Darwin {

namespace {

using Foundation::runGuarded;

/// Says when it is taken apart.
class Witness {
  public:
    explicit Witness(bool& gone) : gone_(gone) {}
    Witness(const Witness&) = delete;
    Witness& operator=(const Witness&) = delete;
    ~Witness() { gone_ = true; }

  private:
    bool& gone_;
};

TEST(FoundationString, HoldsAnyTextThereAndBack) {
    const Pool pool;
    for (const std::string& each : {std::string(), std::string("text"), std::string("a\0b", 3),
                                    std::string("\xc3\xa9\xf0\x9f\x98\x80\n")}) {
        EXPECT_EQ(text(foundationString(each)), each);
    }
    EXPECT_EQ([foundationString("\xf0\x9f\x98\x80") length], 2U);
    EXPECT_EQ(text(foundationString("\xdf\xbf\xe0\xa0\x80\xef\xbf\xbd\xf4\x8f\xbf\xbf")),
              "\xdf\xbf\xe0\xa0\x80\xef\xbf\xbd\xf4\x8f\xbf\xbf");
}

TEST(FoundationString, ReplacesInvalidUTF8) {
    const Pool pool;
    EXPECT_EQ(text(foundationString("a\xff"
                                    "b\xc3")),
              "a\xef\xbf\xbd"
              "b\xef\xbf\xbd");
}

TEST(FoundationString, GivesTextForNilAndForHalvesOfSurrogatePairs) {
    const Pool pool;
    EXPECT_EQ(text(nil), "");
    NSString* const face = foundationString("a\xf0\x9f\x98\x80"
                                            "b");
    EXPECT_EQ(text([face substringToIndex:2]), "a\xef\xbf\xbd");
    EXPECT_EQ(text([face substringFromIndex:2]), "\xef\xbf\xbd"
                                                 "b");
}

TEST(FoundationPath, IsNilForWhatNoFileOfAMacIsCalled) {
    const Pool pool;
    EXPECT_EQ(foundationPath("/a\xff"), nil);
    EXPECT_EQ(foundationPath(std::string("/a\0b", 4)), nil);
    EXPECT_EQ(text(foundationPath("/\xc3\xa9 %41")), "/\xc3\xa9 %41");
}

TEST(FoundationURL, HoldsAPathThereAndBack) {
    const Pool pool;
    for (const char* path : {"/", "/Library/Application Support", "/%41 ?#;", "/\xc3\xa9\n"}) {
        const Base::URL url = Base::URL::fileURL(path);
        EXPECT_EQ(fileURL(foundationURL(url, false)), url) << path;
        EXPECT_EQ(fileURL(foundationURL(url, true)), url) << path;
    }
    EXPECT_EQ(foundationURL(Base::URL::fileURL("/\xff"), false), nil);
    EXPECT_EQ(fileURL(nil), std::nullopt);
}

TEST(RunGuarded, TellsWhetherAnExceptionCameOut) {
    bool ran = false;
    EXPECT_TRUE(runGuarded([&] { ran = true; }));
    EXPECT_TRUE(ran);
    EXPECT_FALSE(runGuarded([] { [NSException raise:NSGenericException format:@"raised"]; }));
}

TEST(RunGuarded, GivesTheReasonToACallerWhoAsks) {
    const Pool pool;
    NSString* reason = @"before";
    EXPECT_TRUE(runGuarded([] {}, &reason));
    EXPECT_EQ(reason, nil);
    EXPECT_FALSE(runGuarded([] { [NSException raise:NSGenericException format:@"out of %d", 7]; }, &reason));
    EXPECT_EQ(text(reason), "out of 7");
    [reason release];
    EXPECT_FALSE(runGuarded(
        [] { [[ReasonlessException exceptionWithName:@"NoReason" reason:nil userInfo:nil] raise]; },
        &reason));
    EXPECT_EQ(text(reason), "NoReason");
    [reason release];
}

TEST(RunGuarded, TakesCxxObjectsApartOnTheWay) {
    bool gone = false;
    EXPECT_FALSE(runGuarded([&] {
        const Witness witness(gone);
        [NSException raise:NSGenericException format:@"raised"];
    }));
    EXPECT_TRUE(gone);
}

NSError* errorOf(NSString* domain, NSInteger code, NSError* underlying) {
    NSDictionary* const info =
        underlying != nil ? [NSDictionary dictionaryWithObject:underlying forKey:NSUnderlyingErrorKey] : nil;
    return [NSError errorWithDomain:domain code:code userInfo:info];
}

TEST(ErrnoOf, IsTheErrorsOwnOrThatOfTheOneUnderneath) {
    const Pool pool;
    NSError* const own = errorOf(NSPOSIXErrorDomain, EACCES, nil);
    EXPECT_EQ(errnoOf(own), EACCES);
    EXPECT_EQ(errnoOf(errorOf(NSCocoaErrorDomain, NSFileWriteUnknownError, own)), EACCES);
    EXPECT_EQ(errnoOf(errorOf(NSCocoaErrorDomain, NSFileWriteFileExistsError, errorOf(@"Other", 5, own))),
              EACCES);
}

TEST(ErrnoOf, FollowsFromTheCocoaCode) {
    const Pool pool;
    EXPECT_EQ(errnoOf(errorOf(NSCocoaErrorDomain, NSFileNoSuchFileError, nil)), ENOENT);
    EXPECT_EQ(errnoOf(errorOf(NSCocoaErrorDomain, NSFileReadNoSuchFileError, nil)), ENOENT);
    EXPECT_EQ(errnoOf(errorOf(NSCocoaErrorDomain, NSFileWriteFileExistsError, nil)), EEXIST);
    EXPECT_EQ(errnoOf(errorOf(NSCocoaErrorDomain, NSFileWriteNoPermissionError, nil)), EACCES);
    EXPECT_EQ(errnoOf(errorOf(NSCocoaErrorDomain, NSFileWriteOutOfSpaceError, nil)), ENOSPC);
    EXPECT_EQ(errnoOf(errorOf(NSCocoaErrorDomain, 1, errorOf(@"Other", 5, nil))), EIO);
    EXPECT_EQ(errnoOf(errorOf(@"Other", NSFileNoSuchFileError, nil)), EIO);
    EXPECT_EQ(errnoOf(nil), EIO);
}

}  // namespace
}  // namespace Platform::Darwin
