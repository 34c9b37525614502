#include "Base/Archive/KeyedArchiver.h"

#include "Base/Archive/Archiver.h"

namespace Base {

std::vector<std::uint8_t> archivedArray(std::span<const CodedObject* const> objects) {
    constexpr std::size_t kUsualReferenceSize = 2;
    constexpr std::size_t kWideReferenceSize = 4;
    if (auto bytes = Archiver(kUsualReferenceSize).archive(objects)) {
        return std::move(*bytes);
    }
    return *Archiver(kWideReferenceSize).archive(objects);
}

}  // namespace Base
