#pragma once

#include "platform/foundation/Bytes.h"
#include "platform/graphics/ColorSpace.h"

/// ICC profiles made by Little CMS for tests.
namespace orvane::test {

Bytes displayP3Profile();
Bytes adobeRGBProfile();
Bytes grayGamma22Profile();

/// Adobe RGB's primaries in linear light.
Bytes linearAdobeRGBProfile();

/// Grey in linear light.
Bytes linearGrayProfile();

/// Grey whose curve, which is straight, gives lightness (CIE L*) and not light.
Bytes grayLightnessProfile();

/// Display P3's matrix with straight curves, and a table, which counts in their place.
Bytes tabledLinearProfile();

/// Adobe RGB's matrix and curves, and a cicp tag, which counts in their place: BT.2020 with PQ.
Bytes taggedPQProfile();

/// sRGB under another name and with a curve table in place of the formula.
Bytes otherMakeSRGBProfile();

/// A simple CMYK profile of multiplicative inks on yellowish paper.
Bytes cmykProfile();

/// Display P3 by a profile of `size` bytes, most of them behind its last tag, where nobody looks.
ColorSpacePtr spaceOfLongProfile(std::uint32_t size);

}  // namespace orvane::test
