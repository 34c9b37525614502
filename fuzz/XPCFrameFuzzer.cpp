// What a peer of a helper may send: frames in any pieces, and the arguments of the one message that it
// understands.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "InstallCommon/XPC/InstallationXPCUtils.h"
#include "Platform/Linux/XPC/XPCMarshalling.h"
#include "UnarchiverCheck.h"

namespace {

using namespace Platform::Linux;

void readFrame(std::span<const std::uint8_t> content) {
    static const Platform::XPCInterface kInterface = InstallCommon::CreateCommandExecutingXPCInterface();
    FrameReader reader(content);
    static_cast<void>(reader.u8());
    static_cast<void>(reader.u32());
    static_cast<void>(reader.u32());
    const auto selector = reader.shortText();
    const Platform::XPCMethod* method = selector ? findMethod(kInterface, *selector) : nullptr;
    if (method == nullptr) {
        return;
    }
    std::string refusal;
    const auto noProxy = [](std::uint32_t, const std::shared_ptr<const Platform::XPCInterface>&) {
        return std::shared_ptr<Platform::XPCObject>();
    };
    const auto arguments = readArguments(reader, *method, noProxy, refusal);
    Fuzz::require(arguments.has_value() == refusal.empty());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The first byte says into pieces of what size the rest is cut.
    if (size == 0) {
        return 0;
    }
    const std::size_t piece = data[0] + std::size_t{1};
    FrameBuffer buffer;
    for (std::size_t at = 1; at < size; at += piece) {
        buffer.append({data + at, std::min(piece, size - at)});
        while (const auto content = buffer.next()) {
            readFrame(*content);
        }
    }
    return 0;
}
