#pragma once

#include <stdexcept>

#include "codecs/PictureMeasurements.h"
#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// The picture could not be written in this format: a side that it cannot hold, an encoder that is
/// missing or gave up. `what()` says why, for developers.
class UnwritableImage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One row of the table of formats that are written from the picture in one quality.
struct ImageDestination {
  enum class Alpha {
    kept,
    none,  ///< `encode` is to be given opaque pictures
  };
  Alpha alpha;

  /// Given to `encode` for a quality of 1.
  double maximumQuality;

  /// Takes a picture of any layout and depth (see RowRenderer), writes it in its rendering space
  /// and says which that is where it is not sRGB. `quality` 0…1 means the same look in every
  /// format. Throws UnwritableImage, std::bad_alloc.
  Bytes (*encode)(const Image& image, const PictureMeasurements& measurements, double quality);

  /// The destination for JPEG, HEIC or AVIF; none for the other formats.
  static const ImageDestination* of(ImageFormat format);
};

// One per format; each lives in its own <Format>Writer.cpp.
extern const ImageDestination jpegDestination;
extern const ImageDestination heicDestination;
extern const ImageDestination avifDestination;

}  // namespace orvane
