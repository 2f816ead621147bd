#include "picture/ImageProcessingError.h"

#include "platform/foundation/LocalizedString.h"

namespace orvane {

ImageProcessingError::ImageProcessingError(Case errorCase, std::string description)
    : LocalizedError(std::move(description)), case_(errorCase) {}

ImageProcessingError ImageProcessingError::encodingFailed(ImageFormat format) {
  const std::string text =
      LocalizedString::lookUp("error.encodingFailedFormat", "Échec de l'encodage au format %@.");
  return {Case::encodingFailed, LocalizedString::substituting(text, format.displayName())};
}

ImageProcessingError ImageProcessingError::contextCreationFailed() {
  return {Case::contextCreationFailed,
          LocalizedString::lookUp("error.contextCreationFailed",
                                  "Impossible de créer le contexte de rendu.")};
}

ImageProcessingError ImageProcessingError::decodingFailed() {
  return {Case::decodingFailed,
          LocalizedString::lookUp("error.decodingFailed", "Impossible de décoder l'image source.")};
}

}  // namespace orvane
