#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "InstallCommon/Command.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"

namespace TestSupport {

/// Where copies of the product's items are kept.
inline const std::string kRepair = "/Library/Application Support/NORVIK/SNT/Repair";

/// A command as some sender might archive it: under the name of `sample`'s class, with whatever keys `write`
/// writes.
class ForeignCommand final : public Base::CodedObject {
  public:
    ForeignCommand(const Base::CodedClass& codedClass, std::function<void(Base::Coder&)> write)
        : codedClass_(codedClass), write_(std::move(write)) {}

    [[nodiscard]] const Base::CodedClass& codedClass() const override { return codedClass_; }
    void encode(Base::Coder& coder) const override { write_(coder); }

  private:
    const Base::CodedClass& codedClass_;
    std::function<void(Base::Coder&)> write_;
};

[[nodiscard]] inline std::vector<Base::URL> urls(const std::vector<std::string>& paths) {
    std::vector<Base::URL> made;
    for (const std::string& path : paths) {
        made.push_back(Base::URL::fileURL(path));
    }
    return made;
}

/// Sends one object through an archive and reads it as the helper does; null when the archive is refused.
template <class Expected>
[[nodiscard]] std::unique_ptr<Expected> afterTheWire(const Base::CodedObject& object) {
    const std::vector<const Base::CodedObject*> objects{&object};
    std::string refusal;
    auto decoded = Base::unarchivedArray(Base::archivedArray(objects),
                                         InstallCommon::allowedCommandListClasses(), refusal);
    if (!decoded || decoded->size() != 1) {
        return nullptr;
    }
    if (auto* expected = dynamic_cast<Expected*>(decoded->front().get())) {
        static_cast<void>(decoded->front().release());
        return std::unique_ptr<Expected>(expected);
    }
    return nullptr;
}

}  // namespace TestSupport
