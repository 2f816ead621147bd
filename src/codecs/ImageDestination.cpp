#include "codecs/ImageDestination.h"

#include <algorithm>
#include <array>

namespace orvane {
namespace {

constexpr std::array destinations{&jpegDestination, &heicDestination, &avifDestination};

}  // namespace

const ImageDestination* ImageDestination::forType(std::string_view typeIdentifier) {
  const auto found = std::ranges::find(destinations, typeIdentifier,
                                       [](const ImageDestination* d) { return d->typeIdentifier; });
  return found == destinations.end() ? nullptr : *found;
}

}  // namespace orvane
