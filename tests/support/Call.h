#pragma once

#include <concepts>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace TestSupport {

/// One call of an operation of a fake Mac, with what it was called with: {"chmod", "/a", 420}.
struct Call {
    template <class... Operands>
    Call(std::string name, const Operands&... with) : operation(std::move(name)), operands{text(with)...} {}

    std::string operation;
    std::vector<std::string> operands;

    friend bool operator==(const Call&, const Call&) = default;
    friend void PrintTo(const Call& call, std::ostream* out) {
        *out << call.operation << '(';
        for (std::size_t i = 0; i < call.operands.size(); ++i) {
            *out << (i == 0 ? "" : ", ") << call.operands[i];
        }
        *out << ')';
    }

  private:
    static std::string text(const std::string& operand) { return operand; }
    static std::string text(std::integral auto operand) { return std::to_string(operand); }
};

/// Everything that was asked of a fake Mac, in order.
using CallList = std::vector<Call>;

}  // namespace TestSupport
