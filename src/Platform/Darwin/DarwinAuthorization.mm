#include "Platform/Darwin/DarwinAuthorization.h"

#include <optional>

#include "Base/FatalError.h"
#include "Platform/Darwin/Declarations/SFAuthorization.h"
#include "Platform/Darwin/FoundationBridge.h"

namespace Platform::Darwin {

namespace {

using NativeItem = ::AuthorizationItem;
using NativeSession = ::SFAuthorization;

/// The items in the system's form. They point into `items`, which the system only reads.
std::vector<NativeItem> nativeItems(const std::vector<Platform::AuthorizationItem>& items) {
    std::vector<NativeItem> result;
    result.reserve(items.size());
    for (const Platform::AuthorizationItem& item : items) {
        const std::size_t available = item.value ? item.value->size() : 0;
        if (item.valueLength > available) {
            Base::fatalError("An authorization item is said to be longer than its value.");
        }
        NativeItem native{};
        native.name = item.name.c_str();
        native.valueLength = item.valueLength;
        native.value = item.value ? const_cast<char*>(item.value->c_str()) : nullptr;
        native.flags = item.flags;
        result.push_back(native);
    }
    return result;
}

::AuthorizationItemSet setOf(std::vector<NativeItem>& items) {
    return {static_cast<UInt32>(items.size()), items.empty() ? nullptr : items.data()};
}

class Session final : public Platform::SFAuthorization {
  public:
    explicit Session(Retained<NativeSession*> session) : session_(std::move(session)) {
        if (const ::AuthorizationRef reference = [session_.get() authorizationRef]; reference != nullptr) {
            reference_.emplace(reference);
        }
    }

    bool obtainWithRights(const std::vector<Platform::AuthorizationItem>& rights, std::uint32_t flags,
                          const std::vector<Platform::AuthorizationItem>& environment) override {
        const Pool pool;
        std::vector<NativeItem> nativeRights = nativeItems(rights);
        std::vector<NativeItem> nativeEnvironment = nativeItems(environment);
        const ::AuthorizationRights rightSet = setOf(nativeRights);
        const ::AuthorizationEnvironment environmentSet = setOf(nativeEnvironment);
        return [session_.get() obtainWithRights:&rightSet
                                          flags:flags
                                    environment:&environmentSet
                               authorizedRights:nullptr
                                          error:nullptr] == YES;
    }

    const AuthorizationReference* authorizationRef() const override {
        return reference_ ? &*reference_ : nullptr;
    }

  private:
    Retained<NativeSession*> session_;
    std::optional<DarwinAuthorizationReference> reference_;
};

}  // namespace

std::unique_ptr<Platform::SFAuthorization> DarwinAuthorization::create() {
    const Pool pool;
    return std::make_unique<Session>(Retained<NativeSession*>::adopt([[NativeSession alloc] init]));
}

}  // namespace Platform::Darwin
