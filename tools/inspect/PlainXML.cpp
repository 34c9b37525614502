#include "PlainXML.h"

#include <algorithm>

#include "Base/UTF8.h"

namespace Inspect {

namespace {

constexpr std::string_view kNameCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

class PlainXMLWriter {
  public:
    PlainXMLWriter(std::string_view document, const XMLLimits& limits)
        : document_(document), limits_(limits) {}

    bool run();
    [[nodiscard]] std::string takePlain() { return std::move(plain_); }
    [[nodiscard]] std::string takeRefusal() { return std::move(refusal_); }

  private:
    bool refuse(std::string_view what);
    [[nodiscard]] bool at(std::string_view text) const {
        return document_.substr(position_).starts_with(text);
    }
    bool readMarkup();
    bool skipTo(std::string_view end);
    bool readDocumentType();
    bool readCharacterData();
    bool readTag();
    // Moves past the tag's ">", which attributes may contain in quotes. Sets whether a slash precedes it.
    bool skipAttributes(bool& closesItself);

    std::string_view document_;
    const XMLLimits& limits_;
    std::size_t position_ = 0;
    std::size_t depth_ = 0;
    std::size_t elements_ = 0;
    std::string plain_;
    std::string refusal_;
};

bool PlainXMLWriter::refuse(std::string_view what) {
    const auto lines =
        std::count(document_.begin(), document_.begin() + static_cast<std::ptrdiff_t>(position_), '\n');
    refusal_ = "line " + std::to_string(lines + 1) + " of the XML form " + std::string(what);
    return false;
}

bool PlainXMLWriter::run() {
    if (!Base::isValidUTF8(document_)) {
        refusal_ = "the XML form is not UTF-8";
        return false;
    }
    const auto control = std::find_if(document_.begin(), document_.end(), [](char c) {
        return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\r' && c != '\t';
    });
    if (control != document_.end()) {
        position_ = static_cast<std::size_t>(control - document_.begin());
        return refuse("holds a control character");
    }
    position_ = at(kByteOrderMark) ? kByteOrderMark.size() : 0;
    while (position_ < document_.size()) {
        if (document_[position_] == '<') {
            if (!readMarkup()) {
                return false;
            }
            continue;
        }
        const std::size_t end = std::min(document_.find('<', position_), document_.size());
        plain_ += document_.substr(position_, end - position_);
        position_ = end;
    }
    return depth_ == 0 || refuse("ends within an element");
}

bool PlainXMLWriter::readMarkup() {
    if (at("<!--")) {
        return skipTo("-->");
    }
    if (at("<![CDATA[")) {
        return readCharacterData();
    }
    if (at("<!DOCTYPE")) {
        return readDocumentType();
    }
    return at("<?") ? skipTo("?>") : readTag();
}

bool PlainXMLWriter::skipTo(std::string_view end) {
    // Past the opening, so that "<!-->" does not end itself.
    constexpr std::size_t kOpening = 4;
    const std::size_t found = document_.find(end, position_ + (end.size() == 3 ? kOpening : 2));
    if (found == std::string_view::npos) {
        return refuse("begins a comment or instruction that does not end");
    }
    position_ = found + end.size();
    return true;
}

bool PlainXMLWriter::readDocumentType() {
    const std::size_t end = document_.find_first_of("[>", position_);
    if (end == std::string_view::npos || document_[end] == '[') {
        return refuse("declares its own document type");
    }
    position_ = end + 1;
    return true;
}

bool PlainXMLWriter::readCharacterData() {
    constexpr std::size_t kOpening = 9;
    const std::size_t end = document_.find("]]>", position_);
    if (end == std::string_view::npos) {
        return refuse("begins a CDATA section that does not end");
    }
    for (const char c : document_.substr(position_ + kOpening, end - position_ - kOpening)) {
        switch (c) {
            case '&':
                plain_ += "&amp;";
                break;
            case '<':
                plain_ += "&lt;";
                break;
            case '>':
                plain_ += "&gt;";
                break;
            default:
                plain_ += c;
        }
    }
    position_ = end + 3;
    return true;
}

bool PlainXMLWriter::skipAttributes(bool& closesItself) {
    char quote = 0;
    char previous = 0;
    for (std::size_t i = position_; i < document_.size(); ++i) {
        const char c = document_[i];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '<') {
            break;
        } else if (c == '>') {
            closesItself = previous == '/';
            position_ = i + 1;
            return true;
        }
        previous = c;
    }
    return refuse("holds a broken tag");
}

bool PlainXMLWriter::readTag() {
    const bool closes = at("</");
    const std::size_t begin = position_ + (closes ? 2 : 1);
    const std::size_t end = std::min(document_.find_first_not_of(kNameCharacters, begin), document_.size());
    const std::string_view name = document_.substr(begin, end - begin);
    if (name.empty() || (end < document_.size() &&
                         std::string_view(" \t\r\n/>").find(document_[end]) == std::string_view::npos)) {
        return refuse("holds a broken tag");
    }
    bool closesItself = false;
    position_ = end;
    if (!skipAttributes(closesItself)) {
        return false;
    }
    if (closes) {
        if (closesItself || depth_ == 0) {
            return refuse("closes an element that is not open");
        }
        --depth_;
        plain_.append("</").append(name) += '>';
        return true;
    }
    if (++elements_ > limits_.elements) {
        return refuse("is beyond the limit of " + std::to_string(limits_.elements) + " elements");
    }
    if (!closesItself && ++depth_ > limits_.depth) {
        return refuse("nests deeper than " + std::to_string(limits_.depth) + " elements");
    }
    plain_.append("<").append(name) += closesItself ? "/>" : ">";
    return true;
}

}  // namespace

std::optional<std::string> plainXML(std::string_view document, std::string& refusal,
                                    const XMLLimits& limits) {
    PlainXMLWriter writer(document, limits);
    if (!writer.run()) {
        refusal = writer.takeRefusal();
        return std::nullopt;
    }
    return writer.takePlain();
}

}  // namespace Inspect
