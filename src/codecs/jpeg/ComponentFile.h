#pragma once

#include <span>

#include "codecs/jpeg/CoefficientPlane.h"
#include "codecs/jpeg/JPEGSettings.h"
#include "codecs/jpeg/ScanScript.h"
#include "platform/foundation/Bytes.h"

namespace orvane {

/// A file of some of a picture's components: of its luma, or of its Cb and Cr, which get the
/// numbers and tables that they have beside luma. Refers to what it is made of.
struct ComponentFile {
  std::span<const CoefficientPlane> planes;  ///< of one size; a single one is luma
  const JPEGSettings::Steps& steps;
  int sampling;      ///< of these components beside the picture's other ones: 1 or 2 both ways
  ByteView profile;  ///< ICC, or nothing

  /// Throws UnwritableImage, std::bad_alloc.
  Bytes write(const ScanScript& scans) const;
};

}  // namespace orvane
