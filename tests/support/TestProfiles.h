#pragma once

#include "platform/foundation/Bytes.h"

/// ICC profiles made by Little CMS for tests.
namespace orvane::test {

Bytes displayP3Profile();
Bytes adobeRGBProfile();
Bytes grayGamma22Profile();

/// sRGB under another name and with a curve table in place of the formula.
Bytes otherMakeSRGBProfile();

/// A simple CMYK profile of multiplicative inks on yellowish paper.
Bytes cmykProfile();

}  // namespace orvane::test
