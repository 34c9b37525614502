#pragma once

#include <cstddef>

#include "Base/FatalError.h"

namespace Platform {

/// A reference to a service of the Mac, or to none: a program that does without a service says so, and using
/// that service is a programming error that ends the process. Copying copies the reference. The service
/// outlives it.
template <typename Service>
class Port {
  public:
    // Implicit, so that a set of ports reads as a list of names and services.
    Port(Service& service) : service_(&service) {}
    Port(std::nullptr_t /*none*/) {}

    [[nodiscard]] explicit operator bool() const { return service_ != nullptr; }
    [[nodiscard]] operator Service&() const { return used(); }
    [[nodiscard]] Service* operator->() const { return &used(); }

  private:
    [[nodiscard]] Service& used() const {
        if (service_ == nullptr) {
            Base::fatalError("This program does not use that service.");
        }
        return *service_;
    }

    Service* service_ = nullptr;
};

}  // namespace Platform
