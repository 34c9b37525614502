#pragma once

#import <Foundation/Foundation.h>

#include <memory>
#include <optional>
#include <string>

#include "Base/Archive/AllowedClasses.h"
#include "Base/Archive/Coder.h"

/// The Objective-C face of the program's coded objects: what the system's coders see of them.
///
/// For every Base::CodedClass there is one class of the Objective-C runtime, below that of its superclass,
/// made when it is first asked for; its instances carry one C++ object each and code it through the C++ class
/// itself. Nothing here knows any of them by name.
///
/// No such class derives from this one, which is the model of their fields and methods: an archive names
/// every class that an object's class derives from, and that is NSObject next to the coded ones.
///
/// Names. The class has the coded class's runtime name. The system's runtime reads a name of the form
/// "_TtC<length><module><length><class>" as "<module>.<class>" and hands that out (class_getName,
/// NSStringFromClass), and it finds the class under either form; so an archive that names the class in either
/// form is read here. NSKeyedArchiver is told to write the runtime name itself. The coder of an
/// NSXPCConnection cannot be told: it writes whichever form NSStringFromClass gives, and since both ends of
/// our connections have the class registered under the same name before a message arrives, they agree.
@interface PlatformDarwinCarrier : NSObject <NSSecureCoding> {
  @private
    const Base::CodedObject* object_;
    BOOL owns_;
}

/// What it carries; null when a loan has ended. Lives as long as the carrier or the loan.
- (const Base::CodedObject*)carriedObject;

@end

namespace Platform::Darwin {

/// The Objective-C class for `coded`, registered by the first call, together with those of its superclasses.
/// Never nil: a class of another origin with the same name is a programming error that ends the process. May
/// be called on any thread.
[[nodiscard]] Class carrierClass(const Base::CodedClass& coded);

/// A carrier that owns `object`, autoreleased.
[[nodiscard]] PlatformDarwinCarrier* carrierOwning(std::unique_ptr<Base::CodedObject> object);

/// Has `object` carried while it is encoded, without giving it away. A coder that kept the carrier for later
/// finds it empty, which ends the process.
class Loan {
  public:
    explicit Loan(const Base::CodedObject& object);
    Loan(const Loan&) = delete;
    Loan& operator=(const Loan&) = delete;
    ~Loan();

    [[nodiscard]] PlatformDarwinCarrier* carrier() const { return carrier_; }

  private:
    PlatformDarwinCarrier* carrier_;
};

/// The object that `value` carries; null if it is not a carrier. Lives as long as `value`.
[[nodiscard]] const Base::CodedObject* carriedObject(id value);

/// A copy of a decoded object: several references of an archive may lead to the same carrier, so that none
/// can be given what it carries. Null when it does not fit into an archive of ours; `refusal` says why.
[[nodiscard]] std::unique_ptr<Base::CodedObject> copyOf(const Base::CodedObject& object,
                                                        std::string& refusal);

/// The objects of a list, each in its own carrier, autoreleased.
[[nodiscard]] NSArray* carrierList(Base::CodedObjectList objects);

/// The objects that `list`, a decoded array of carriers, holds. Whatever the system's coder let through, the
/// list passes the program's own unarchiver here, with its limits and the exact `allowed` classes. Nothing,
/// and one line in `refusal`, when it does not, or is nil or no array of carriers.
[[nodiscard]] std::optional<Base::CodedObjectList> codedObjects(id list, const Base::AllowedClasses& allowed,
                                                                std::string& refusal);

}  // namespace Platform::Darwin
