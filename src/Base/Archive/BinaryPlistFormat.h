#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

/// The binary property list, as far as its reader and its writer use it. All numbers are big-endian.
///
///   signature      "bplist00"
///   objects        one after another, in any order
///   offset table   for each object, its offset from the start of the file
///   trailer        32 bytes: 6 unused,
///                  1 each: the width of an entry of the offset table, the width of a reference,
///                  8 each: the number of objects, the id of the top object,
///                  the offset of the offset table
///
/// An object begins with a marker byte. Its upper half is the kind of object, its lower half is n:
///
///   0x00, 0x08, 0x09   null, false, true; nothing follows
///   0x1n, 0x2n         integer, real of 2^n bytes
///   0x33               date, a real of 8 bytes
///   0x4n, 0x5n, 0x6n   data, ASCII text, UTF-16 text of n units
///   0x8n               UID of n + 1 bytes
///   0xAn               array: n references to its members
///   0xDn               dictionary: n references to its keys, then n to its values
///
/// In the kinds that have a count, n = 15 says that an integer object with the count follows the marker. A
/// reference is an object's index in the offset table.
namespace Base::BinaryPlist {

/// An object's index in the offset table.
using ObjectId = std::uint32_t;

inline constexpr std::string_view kSignature = "bplist00";
inline constexpr std::size_t kTrailerSize = 32;

inline constexpr unsigned kNull = 0x00;
inline constexpr unsigned kFalse = 0x08;
inline constexpr unsigned kTrue = 0x09;

inline constexpr unsigned kSimple = 0x00;
inline constexpr unsigned kInteger = 0x10;
inline constexpr unsigned kReal = 0x20;
inline constexpr unsigned kDate = 0x30;
inline constexpr unsigned kData = 0x40;
inline constexpr unsigned kASCII = 0x50;
inline constexpr unsigned kUTF16 = 0x60;
inline constexpr unsigned kUID = 0x80;
inline constexpr unsigned kArray = 0xA0;
inline constexpr unsigned kDictionary = 0xD0;

/// The lower half of a marker that says that the count follows.
inline constexpr unsigned kCountFollows = 0x0F;

}  // namespace Base::BinaryPlist
