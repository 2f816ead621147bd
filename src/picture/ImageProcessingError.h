#pragma once

#include "picture/ImageFormat.h"
#include "platform/foundation/LocalizedError.h"

namespace orvane {

/// A failure between the bytes of a source and the bytes of an output.
class ImageProcessingError : public LocalizedError {
 public:
  enum class Case { encodingFailed, contextCreationFailed, decodingFailed };

  static ImageProcessingError encodingFailed(ImageFormat format);
  static ImageProcessingError contextCreationFailed();
  static ImageProcessingError decodingFailed();

  Case errorCase() const noexcept { return case_; }

 private:
  ImageProcessingError(Case errorCase, std::string description);

  Case case_;
};

}  // namespace orvane
