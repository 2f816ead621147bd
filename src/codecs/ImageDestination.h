#pragma once

#include <stdexcept>
#include <string_view>

#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// The picture could not be written in this format: a side that it cannot hold, an encoder that is
/// missing or gave up. `what()` says why, for developers.
class UnwritableImage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One row of the table of formats that the platform writes.
struct ImageDestination {
  std::string_view typeIdentifier;

  /// Takes a picture of any layout and depth (see RowRenderer), writes it in its rendering space
  /// and says which that is where it is not sRGB. Alpha is kept where the format can. `quality` 0…1
  /// means the same look in every format. Throws UnwritableImage, std::bad_alloc.
  Bytes (*encode)(const Image& image, double quality);

  /// The destination of that type, or none.
  static const ImageDestination* forType(std::string_view typeIdentifier);
};

// One per format; each lives in its own <Format>Writer.cpp.
extern const ImageDestination jpegDestination;
extern const ImageDestination heicDestination;
extern const ImageDestination avifDestination;

}  // namespace orvane
