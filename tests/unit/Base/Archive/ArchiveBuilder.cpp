#include "ArchiveBuilder.h"

#include "Base/Archive/KeyedUnarchiver.h"
#include "Samples.h"

PlistBuilder::Id PlistBuilder::raw(std::string bytes) {
    objects_.push_back(std::move(bytes));
    return objects_.size() - 1;
}

std::string PlistBuilder::bigEndian(std::uint64_t value, std::size_t width) {
    std::string bytes;
    for (std::size_t i = width; i-- > 0;) {
        bytes += static_cast<char>(i < 8 ? value >> 8 * i & 0xFF : 0);
    }
    return bytes;
}

std::string PlistBuilder::header(unsigned type, std::size_t count) const {
    if (count < 15) {
        return {static_cast<char>(type | count)};
    }
    return static_cast<char>(type | 0xF) + ("\x12" + bigEndian(count, 4));
}

PlistBuilder::Id PlistBuilder::utf16(const std::u16string& text) {
    std::string bytes = header(0x60, text.size());
    for (const char16_t unit : text) {
        bytes += bigEndian(unit, 2);
    }
    return raw(bytes);
}

PlistBuilder::Id PlistBuilder::integer(std::uint64_t value, std::size_t width) {
    const unsigned exponent = width == 1 ? 0 : width == 2 ? 1 : width == 4 ? 2 : width == 8 ? 3 : 4;
    return raw(static_cast<char>(0x10 | exponent) + bigEndian(value, width));
}

PlistBuilder::Id PlistBuilder::uid(std::uint64_t value, std::size_t width) {
    return raw(static_cast<char>(0x80 | (width - 1)) + bigEndian(value, width));
}

std::string PlistBuilder::arrayBytes(const std::vector<Id>& members) const {
    std::string bytes = header(0xA0, members.size());
    for (const Id member : members) {
        bytes += bigEndian(member, referenceSize_);
    }
    return bytes;
}

std::string PlistBuilder::dictionaryBytes(const std::vector<std::pair<Id, Id>>& pairs) const {
    std::string bytes = header(0xD0, pairs.size());
    for (const auto& [key, value] : pairs) {
        bytes += bigEndian(key, referenceSize_);
    }
    for (const auto& [key, value] : pairs) {
        bytes += bigEndian(value, referenceSize_);
    }
    return bytes;
}

PlistBuilder::Id PlistBuilder::dictionary(const std::vector<std::pair<std::string, Id>>& pairs) {
    std::vector<std::pair<Id, Id>> ids;
    ids.reserve(pairs.size());
    for (const auto& [key, value] : pairs) {
        ids.emplace_back(ascii(key), value);
    }
    return dictionary(ids);
}

std::vector<std::uint8_t> PlistBuilder::finish(Id top) const {
    std::string bytes = "bplist00";
    std::string table;
    for (const std::string& object : objects_) {
        table += bigEndian(bytes.size(), offsetSize_);
        bytes += object;
    }
    const std::size_t tableOffset = bytes.size();
    bytes += table + std::string(6, '\0') + static_cast<char>(offsetSize_) +
             static_cast<char>(referenceSize_) + bigEndian(objects_.size(), 8) + bigEndian(top, 8) +
             bigEndian(tableOffset, 8);
    return {bytes.begin(), bytes.end()};
}

ArchiveBuilder::ArchiveBuilder(std::size_t referenceSize, std::size_t offsetSize)
    : plist(referenceSize, offsetSize) {
    string("$null");
}

ArchiveBuilder::Index ArchiveBuilder::entry(Id content) {
    entries_.push_back(content);
    return entries_.size() - 1;
}

ArchiveBuilder::Index ArchiveBuilder::classNamed(std::string_view name) {
    const Id text = plist.ascii(name);
    return entry(
        plist.dictionary({{"$classname", text}, {"$classes", plist.array({text, plist.ascii("NSObject")})}}));
}

ArchiveBuilder::Index ArchiveBuilder::object(Index classIndex, Keys keys) {
    keys.emplace_back("$class", ref(classIndex));
    return entry(plist.dictionary(keys));
}

ArchiveBuilder::Index ArchiveBuilder::array(const std::vector<Index>& members, std::string_view className) {
    std::vector<Id> references;
    references.reserve(members.size());
    for (const Index member : members) {
        references.push_back(ref(member));
    }
    return object(classNamed(className), {{"NS.objects", plist.array(references)}});
}

ArchiveBuilder::Index ArchiveBuilder::url(std::string_view relative, Index base) {
    return object(classNamed("NSURL"), {{"NS.base", ref(base)}, {"NS.relative", ref(string(relative))}});
}

ArchiveBuilder::Index ArchiveBuilder::link(Index target, Index title) {
    return object(classNamed("SampleLink"), {{"target", ref(target)}, {"title", ref(title)}});
}

std::vector<std::uint8_t> ArchiveBuilder::finish(const std::vector<Index>& elements) {
    const Index root = array(elements);
    return finish(root, archiverName(), version());
}

std::vector<std::uint8_t> ArchiveBuilder::finish(Index root, Id archiver, Id version) {
    Keys frame{{"$top", plist.dictionary({{"root", ref(root)}})}, {"$objects", plist.array(entries_)}};
    if (archiver != 0) {
        frame.emplace_back("$archiver", archiver);
    }
    if (version != 0) {
        frame.emplace_back("$version", version);
    }
    return plist.finish(plist.dictionary(frame));
}

std::vector<std::uint8_t> listOf(ArchiveBuilder& archive, const char* className,
                                 const ArchiveBuilder::Keys& keys) {
    return archive.finish({archive.object(archive.classNamed(className), keys)});
}

std::string outcomeWithin(const std::vector<std::uint8_t>& archive, const Base::UnarchivingLimits& limits) {
    std::string refusal;
    return Base::unarchivedArray(archive, Samples::allowedClasses(), refusal, limits) ? "read" : refusal;
}

std::string outcome(const std::vector<std::uint8_t>& archive) {
    std::string refusal;
    const auto objects = Base::unarchivedArray(archive, Samples::allowedClasses(), refusal);
    return objects ? Samples::described(*objects) : "refused: " + refusal;
}

std::string linkOutcome(ArchiveBuilder& archive, ArchiveBuilder::Index target, ArchiveBuilder::Index title) {
    return outcome(archive.finish({archive.link(target, title)}));
}
