#pragma once

#include "codecs/ImageDestination.h"
#include "codecs/look/StructuralScore.h"

namespace orvane {

/// How a sample of a picture (see PictureSample) looks when a destination has coded it. Refers to
/// all three, which must outlive it. May be used by several threads at once.
class SampleScore {
 public:
  /// Throws std::bad_alloc.
  SampleScore(const ImageDestination& destination, const Image& sample,
              const PictureMeasurements& measurements);

  /// Encodes, decodes and scores (see StructuralScore). Throws UnwritableImage, UnreadableImage,
  /// std::bad_alloc.
  double at(double quality) const;

 private:
  const ImageDestination& destination_;
  const Image& sample_;
  const PictureMeasurements& measurements_;
  StructuralScore reference_;
};

}  // namespace orvane
