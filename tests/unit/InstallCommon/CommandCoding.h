#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "support/FakeMac.h"

/// A list as its sender archives it and the helper decodes it.
namespace CommandCodingTests {

using namespace InstallCommon;
using namespace NorvikCommon;
using Base::URL;

/// An object that archives under any class with any keys: a stranger's message.
class Stranger final : public Base::CodedObject {
  public:
    Stranger(const Base::CodedClass& as, std::function<void(Base::Coder&)> keys)
        : class_(as), keys_(std::move(keys)) {}

    [[nodiscard]] const Base::CodedClass& codedClass() const override { return class_; }
    void encode(Base::Coder& coder) const override { keys_(coder); }

  private:
    const Base::CodedClass& class_;
    std::function<void(Base::Coder&)> keys_;
};

class CommandCoding : public testing::Test {
  protected:
    /// What the helper makes of an archive of this one object.
    [[nodiscard]] std::unique_ptr<Command> sent(const Base::CodedObject& object) {
        const Base::CodedObject* const list[] = {&object};
        auto objects =
            Base::unarchivedArray(Base::archivedArray(list), allowedCommandListClasses(), refusal_);
        if (!objects) {
            return nullptr;
        }
        auto commands = commandList(std::move(*objects));
        return commands ? std::move(commands->at(0)) : nullptr;
    }

    template <class Concrete>
    [[nodiscard]] std::unique_ptr<Concrete> roundTrip(const Concrete& command) {
        std::unique_ptr<Command> decoded = sent(command);
        auto* concrete = dynamic_cast<Concrete*>(decoded.get());
        if (concrete != nullptr) {
            static_cast<void>(decoded.release());
        }
        return std::unique_ptr<Concrete>(concrete);
    }

    TestSupport::FakeMac mac_;
    std::string refusal_;
};

inline const LaunchdInfo kJob =
    LaunchdInfo::launchdWithName("fileaccessd", URL::fileURL("/Library/LaunchDaemons"));

}  // namespace CommandCodingTests
