#pragma once

#include <stdexcept>

#include "codecs/PictureMeasurements.h"
#include "codecs/QualityTable.h"
#include "codecs/look/PictureSample.h"
#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// The picture could not be written in this format: a side is too long, or an encoder is missing or
/// failed. `what()` says why, for developers.
class UnwritableImage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One row of the table of formats that are encoded from an image at one quality.
struct ImageDestination {
  enum class Alpha {
    kept,
    none,  ///< `encode` takes opaque pictures only
  };
  Alpha alpha;

  /// Given to `encode` for a quality of 1.
  double maximumQuality;

  /// Takes a picture of any layout and depth (see RowRenderer) and writes it in its rendering
  /// space, which the file names unless it is sRGB. `quality` 0…1 means the same look in every
  /// format. Works on up to `threads` threads, on which the bytes do not depend. Throws
  /// UnwritableImage, std::bad_alloc.
  Bytes (*encode)(const Image& image, const PictureMeasurements& measurements, double quality,
                  int threads);

  /// Writes a file of the same pixels as `encode` does, on one thread. It may be larger, and takes
  /// less time. Throws UnwritableImage, std::bad_alloc.
  Bytes (*encodeSample)(const Image& image, const PictureMeasurements& measurements,
                        double quality);

  SampleShape sampleShape;  ///< bands are at least as wide as the encoder's largest blocks

  /// The mean score of photographs' samples at each quality.
  std::span<const QualityPoint> (*sampleScores)();

  /// The destination for JPEG, HEIC or AVIF; none for the other formats.
  static const ImageDestination* of(ImageFormat format);
};

// One per format; each lives in its own <Format>Writer.cpp.
extern const ImageDestination jpegDestination;
extern const ImageDestination heicDestination;
extern const ImageDestination avifDestination;

}  // namespace orvane
