#include "codecs/jpeg/CoefficientPlanes.h"

#include <algorithm>

#include "codecs/ImageDestination.h"

namespace orvane {

CoefficientPlanes::CoefficientPlanes(std::size_t width, std::size_t height, std::size_t count,
                                     JPEGSettings::Chroma chroma)
    : count_(count) {
  if (width == 0 || height == 0) throw UnwritableImage("a side has no pixels");
  if (std::max(width, height) > JPEG_MAX_DIMENSION) throw UnwritableImage("a side is too long");
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t side = i > 0 ? unitSide(chroma) : 8;
    planes_[i].columns = (width + side - 1) / side;
    planes_[i].rows = (height + side - 1) / side;
  }
  owner_.err = &errors_;
  errors_.run<UnwritableImage>([this] { allocate(); });
}

void CoefficientPlanes::allocate() {
  jpeg_create_compress(&owner_);
  auto* const info = reinterpret_cast<j_common_ptr>(&owner_);
  // libjpeg reads whole coding units, which are up to 2x2 blocks.
  const auto wholeUnits = [](std::size_t blocks) {
    return static_cast<JDIMENSION>((blocks + 1) / 2 * 2);
  };
  for (std::size_t i = 0; i < count_; ++i) {
    const JDIMENSION rows = wholeUnits(planes_[i].rows);
    arrays_[i] = owner_.mem->request_virt_barray(info, JPOOL_IMAGE, TRUE,
                                                 wholeUnits(planes_[i].columns), rows, rows);
  }
  owner_.mem->realize_virt_arrays(info);
  for (std::size_t i = 0; i < count_; ++i) {
    planes_[i].blocks =
        owner_.mem->access_virt_barray(info, arrays_[i], 0, wholeUnits(planes_[i].rows), TRUE);
  }
}

}  // namespace orvane
