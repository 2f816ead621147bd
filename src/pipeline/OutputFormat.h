#pragma once

#include <optional>

#include "picture/EncodingPlan.h"
#include "picture/ImageCharacteristics.h"
#include "picture/ImageFormat.h"
#include "picture/RGBABuffer.h"
#include "pipeline/EncodingAttempts.h"
#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// One decoded picture in both forms that encoders take, and its analysis.
struct Picture {
  Image image;        ///< upright, as it was decoded
  RGBABuffer buffer;  ///< the same picture rendered
  ImageCharacteristics characteristics;
};

/// One row of the table of formats that can be written.
struct OutputFormat {
  enum class Input { buffer, image };

  /// The source format whose files can be repacked without loss. `repack` gives nothing for a file
  /// that cannot.
  struct Repacking {
    ImageFormat source;
    std::optional<Bytes> (*repack)(ByteView file, const EncodingPlan& plan);
  };

  ImageFormat format;
  Input input;              ///< the form that `encode` reads
  std::size_t maximumSide;  ///< pixels
  Bytes (*encodeForm)(const Picture& picture, const EncodingPlan& plan, PNGForm pngForm);
  std::optional<Repacking> repacking;

  static const OutputFormat& of(ImageFormat format);

  /// Throws ImageProcessingError::encodingFailed for every failure, also for a side past
  /// `maximumSide` and for a lack of memory. `pngForm` counts for PNG only.
  Bytes encode(const Picture& picture, const EncodingPlan& plan, PNGForm pngForm) const;
};

}  // namespace orvane
