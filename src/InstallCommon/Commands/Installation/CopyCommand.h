#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Base/URL.h"
#include "InstallCommon/Command.h"

namespace InstallCommon {

/// Puts items into place and records a repair copy of each.
class CopyCommand final : public CodedCommand<CopyCommand> {
  public:
    struct Item {
        Base::URL source;
        /// The whole path of the item to create, not its parent folder.
        Base::URL destination;

        friend bool operator==(const Item&, const Item&) = default;
    };

    CopyCommand(std::string commandDescription, std::vector<Item> items);
    CopyCommand(std::string commandDescription, const Base::URL& source, const Base::URL& destination);

    [[nodiscard]] const std::vector<Item>& itemsToCopy() const { return itemsToCopy_; }

    /// Pair by pair, in order; a failed copy is still followed by its backup and by the next pair. The lines
    /// are those of FileSystemUtil::copy and RepairItemsUtil::backup.
    void execute() const override;

    static constexpr std::string_view runtimeName = "_TtC13InstallCommon11CopyCommand";
    void encode(Base::Coder& coder) const override;
    [[nodiscard]] static std::unique_ptr<Base::CodedObject> decode(Base::Coder& coder);

  private:
    std::vector<Item> itemsToCopy_;
};

}  // namespace InstallCommon
