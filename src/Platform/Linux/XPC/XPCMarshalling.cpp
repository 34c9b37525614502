#include "Platform/Linux/XPC/XPCMarshalling.h"

#include <algorithm>
#include <utility>

#include "Base/Archive/KeyedArchiver.h"
#include "Base/Archive/KeyedUnarchiver.h"
#include "Base/FatalError.h"
#include "Base/UTF8.h"

namespace Platform::Linux {

namespace {

std::vector<std::uint8_t> archived(const Base::CodedObjectList& objects) {
    std::vector<const Base::CodedObject*> borrowed;
    borrowed.reserve(objects.size());
    for (const std::unique_ptr<Base::CodedObject>& object : objects) {
        borrowed.push_back(object.get());
    }
    return Base::archivedArray(borrowed);
}

void writeNumber(FrameWriter& frame, std::uint32_t value) {
    frame.u32(sizeof value);
    frame.u32(value);
}

void writeArgument(FrameWriter& frame, const XPCArgument& declared, XPCValue value,
                   const ExportObject& exportObject) {
    frame.u8(static_cast<std::uint8_t>(declared.kind));
    switch (declared.kind) {
        case XPCArgumentKind::string:
            frame.sized(std::get<std::string>(value));
            return;
        case XPCArgumentKind::int32:
            writeNumber(frame, static_cast<std::uint32_t>(std::get<std::int32_t>(value)));
            return;
        case XPCArgumentKind::url:
            frame.sized(std::get<Base::URL>(value).absoluteString());
            return;
        case XPCArgumentKind::codedObjects:
            frame.sized(archived(std::get<Base::CodedObjectList>(value)));
            return;
        case XPCArgumentKind::object:
            writeNumber(frame,
                        exportObject(std::move(std::get<std::shared_ptr<XPCObject>>(value)), declared.proxy));
            return;
    }
    Base::fatalError("unexpected enumeration value");
}

std::optional<std::uint32_t> number(std::span<const std::uint8_t> bytes) {
    FrameReader reader(bytes);
    const std::optional<std::uint32_t> value = reader.u32();
    return reader.atEnd() ? value : std::nullopt;
}

std::optional<XPCValue> readNumber(std::span<const std::uint8_t> bytes, std::string& refusal) {
    const std::optional<std::uint32_t> value = number(bytes);
    if (!value) {
        refusal = "a number of another size";
        return std::nullopt;
    }
    return XPCValue(static_cast<std::int32_t>(*value));
}

std::optional<XPCValue> readString(std::span<const std::uint8_t> bytes, std::string& refusal) {
    if (!Base::isValidUTF8(asText(bytes))) {
        refusal = "a string that is not UTF-8";
        return std::nullopt;
    }
    return XPCValue(std::string(asText(bytes)));
}

std::optional<XPCValue> readURL(std::span<const std::uint8_t> bytes, std::string& refusal) {
    std::optional<Base::URL> url = Base::URL::parse(asText(bytes));
    if (!url) {
        refusal = "a URL that names no file";
        return std::nullopt;
    }
    return XPCValue(std::move(*url));
}

std::optional<XPCValue> readObjects(std::span<const std::uint8_t> bytes, const XPCArgument& declared,
                                    std::string& refusal) {
    std::optional<Base::CodedObjectList> objects = Base::unarchivedArray(bytes, declared.allowed, refusal);
    return objects ? std::optional<XPCValue>(std::move(*objects)) : std::nullopt;
}

std::optional<XPCValue> readProxy(std::span<const std::uint8_t> bytes, const XPCArgument& declared,
                                  const MakeProxy& makeProxy, std::string& refusal) {
    const std::optional<std::uint32_t> object = number(bytes);
    if (!object || *object == 0) {
        refusal = "an object without a number";
        return std::nullopt;
    }
    return XPCValue(makeProxy(*object, declared.proxy));
}

std::optional<XPCValue> readArgument(std::span<const std::uint8_t> bytes, const XPCArgument& declared,
                                     const MakeProxy& makeProxy, std::string& refusal) {
    switch (declared.kind) {
        case XPCArgumentKind::string:
            return readString(bytes, refusal);
        case XPCArgumentKind::int32:
            return readNumber(bytes, refusal);
        case XPCArgumentKind::url:
            return readURL(bytes, refusal);
        case XPCArgumentKind::codedObjects:
            return readObjects(bytes, declared, refusal);
        case XPCArgumentKind::object:
            return readProxy(bytes, declared, makeProxy, refusal);
    }
    Base::fatalError("unexpected enumeration value");
}

}  // namespace

const XPCMethod* findMethod(const XPCInterface& interface, std::string_view selector) {
    const auto found =
        std::find_if(interface.methods.begin(), interface.methods.end(),
                     [selector](const XPCMethod& method) { return method.selector == selector; });
    return found == interface.methods.end() ? nullptr : &*found;
}

std::vector<std::uint8_t> messageFrame(std::uint32_t object, std::uint32_t reply, const XPCMethod& method,
                                       std::vector<XPCValue> arguments, const ExportObject& exportObject) {
    if (arguments.size() != method.arguments.size()) {
        Base::fatalError("a message with the wrong number of arguments");
    }
    FrameWriter frame(FrameKind::message);
    frame.u32(object);
    frame.u32(reply);
    frame.shortText(method.selector);
    frame.u8(static_cast<std::uint8_t>(arguments.size()));
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        writeArgument(frame, method.arguments[i], std::move(arguments[i]), exportObject);
    }
    return frame.finish();
}

std::optional<std::vector<XPCValue>> readArguments(FrameReader& reader, const XPCMethod& method,
                                                   const MakeProxy& makeProxy, std::string& refusal) {
    const std::optional<std::uint8_t> count = reader.u8();
    if (!count || *count != method.arguments.size()) {
        refusal = "another number of arguments";
        return std::nullopt;
    }
    std::vector<XPCValue> values;
    for (const XPCArgument& declared : method.arguments) {
        const std::optional<std::uint8_t> kind = reader.u8();
        const auto bytes = reader.sized();
        if (!kind || !bytes || *kind != static_cast<std::uint8_t>(declared.kind)) {
            refusal = "argument " + std::to_string(values.size()) + ": cut off or of another kind";
            return std::nullopt;
        }
        std::optional<XPCValue> value = readArgument(*bytes, declared, makeProxy, refusal);
        if (!value) {
            refusal.insert(0, "argument " + std::to_string(values.size()) + ": ");
            return std::nullopt;
        }
        values.push_back(std::move(*value));
    }
    if (!reader.atEnd()) {
        refusal = "bytes after the last argument";
        return std::nullopt;
    }
    return values;
}

}  // namespace Platform::Linux
