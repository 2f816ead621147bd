#include "codecs/jpeg/CoefficientPlane.h"

#include "codecs/ImageDestination.h"

namespace orvane {

CoefficientPlane::CoefficientPlane(std::size_t width, std::size_t height)
    : width_(width), height_(height), owner_(std::make_unique<Owner>()) {
  owner_->compressor.err = &owner_->errors;
  owner_->errors.run<UnwritableImage>([this] { allocate(); });
}

void CoefficientPlane::allocate() {
  JPEGCompressor& owner = owner_->compressor;
  jpeg_create_compress(&owner);
  auto* const info = reinterpret_cast<j_common_ptr>(&owner);
  // libjpeg reads whole coding units, which are up to 2x2 blocks.
  const auto wholeUnits = [](std::size_t blocks) {
    return static_cast<JDIMENSION>((blocks + 1) / 2 * 2);
  };
  const JDIMENSION rowCount = wholeUnits(rows());
  array_ = owner.mem->request_virt_barray(info, JPOOL_IMAGE, TRUE, wholeUnits(columns()), rowCount,
                                          rowCount);
  owner.mem->realize_virt_arrays(info);
  blocks_ = owner.mem->access_virt_barray(info, array_, 0, rowCount, TRUE);
}

}  // namespace orvane
