#pragma once

#include <optional>
#include <string_view>

#include "platform/foundation/Bytes.h"

/// What the outermost boxes of an ISO base media file (ISO/IEC 14496-12) with image items
/// (ISO/IEC 23008-12) say, read without decoding anything. Safe on any bytes: boxes that reach past
/// the end of what holds them are read as far as they go. Codes are the four characters that stand
/// in the file ("av01"); they refer to the file's bytes, which must outlive them.
namespace orvane::ISOBaseMedia {

/// Whether the file begins with a file type box that names `brand` as its major brand or as a
/// compatible one.
bool hasBrand(ByteView file, std::string_view brand);

/// How the primary item is coded: its type ("av01", "hvc1", "iovl", …), but for grids and identity
/// derivations the type of the first item that they are derived from; "grid" or "iden" where that
/// leads nowhere. Nothing when the file does not begin with a file type box, names no primary item
/// or does not say of what type it is.
std::optional<std::string_view> primaryItemCoding(ByteView file);

}  // namespace orvane::ISOBaseMedia
