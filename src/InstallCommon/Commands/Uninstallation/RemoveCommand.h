#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Base/URL.h"
#include "InstallCommon/Command.h"

namespace InstallCommon {

/// Deletes files and folders together with their repair copies.
class RemoveCommand final : public CodedCommand<RemoveCommand> {
  public:
    struct Item {
        Base::URL path;
        /// Leaves the item and its repair copy alone if the item is a folder with visible entries.
        bool removeIfEmpty = false;

        friend bool operator==(const Item&, const Item&) = default;
    };

    RemoveCommand(std::string commandDescription, std::vector<Item> items);
    /// Every item is removed unconditionally.
    RemoveCommand(std::string commandDescription, const std::vector<Base::URL>& items);
    RemoveCommand(std::string commandDescription, const Base::URL& item);

    [[nodiscard]] const std::vector<Item>& itemsToRemove() const { return itemsToRemove_; }

    /// Item by item, in order; each outcome is one line of FileSystemUtil::remove, for the item and again for
    /// its repair copy, whether or not there is one.
    void execute() const override;

    static constexpr std::string_view runtimeName = "_TtC13InstallCommon13RemoveCommand";
    void encode(Base::Coder& coder) const override;
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);

  private:
    std::vector<Item> itemsToRemove_;
};

}  // namespace InstallCommon
