#include "Base/DictionaryShape.h"

namespace Base {

using Object = BinaryPlistReader::Object;

DictionaryShape::DictionaryShape(const BinaryPlistReader& plist, const Object& dictionary)
    : references_(dictionary.content), count_(0) {
    for (std::size_t i = 0; i < dictionary.count; ++i) {
        const std::string_view key =
            BinaryPlistReader::asciiText(plist.object(plist.reference(dictionary, i)));
        const bool isRepeated = search(key) != kNowhere;
        keys_[i] = isRepeated ? Key{nullptr, 0} : Key{key.data(), key.size()};
        ++count_;
    }
    class_ = search("$class");
    base_ = search("NS.base");
    relative_ = search("NS.relative");
}

std::size_t DictionaryShape::search(std::string_view key) const {
    for (std::size_t i = 0; i < count_; ++i) {
        if (sameText(text(i), key)) {
            return i;
        }
    }
    return kNowhere;
}

bool DictionaryShape::fits(const BinaryPlistReader& plist, const Object& dictionary) const {
    if (dictionary.count != count_) {
        return false;
    }
    const std::size_t size = count_ * plist.referenceSize();
    return sameText({reinterpret_cast<const char*>(references_), size},
                    {reinterpret_cast<const char*>(dictionary.content), size});
}

std::uint8_t DictionaryShapes::keep(const BinaryPlistReader& plist, const Object& dictionary) {
    if (dictionary.count == 0) {
        return kNone;
    }
    const std::size_t width = plist.referenceSize();
    const std::size_t mark =
        dictionary.content[width - 1] + 3U * dictionary.content[width * dictionary.count - 1];
    constexpr std::size_t kTries = 4;
    constexpr std::size_t kUsualShapes = 12;
    for (std::size_t tried = 0; tried < kTries; ++tried) {
        std::uint8_t& place = places_[(mark + tried) % places_.size()];
        if (place == 0) {
            if (shapes_.size() == kMaxShapes) {
                break;
            }
            shapes_.reserve(kUsualShapes);
            shapes_.emplace_back(plist, dictionary);
            place = static_cast<std::uint8_t>(shapes_.size());
        }
        if (shapes_[place - 1U].fits(plist, dictionary)) {
            return static_cast<std::uint8_t>(place - 1);
        }
    }
    return kNone;
}

}  // namespace Base
