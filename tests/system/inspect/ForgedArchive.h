#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Base/Archive/Coder.h"

namespace InspectTest {

/// An object that claims a class and holds whatever keys a stranger has given it.
class Forged final : public Base::CodedObject {
  public:
    using Keys = std::function<void(Base::Coder&)>;

    explicit Forged(const Base::CodedClass& coded, Keys keys = {}) : coded_(coded), keys_(std::move(keys)) {}

    [[nodiscard]] const Base::CodedClass& codedClass() const override { return coded_; }
    void encode(Base::Coder& coder) const override {
        if (keys_) {
            keys_(coder);
        }
    }

  private:
    const Base::CodedClass& coded_;
    Keys keys_;
};

/// The archive of these objects, as it travels.
[[nodiscard]] std::string archiveOf(const std::vector<const Base::CodedObject*>& objects);
[[nodiscard]] std::string archiveOf(const Base::CodedObject& object);

}  // namespace InspectTest
