#pragma once

#include "codecs/ImageDestination.h"

namespace orvane {

/// The quality, 0…1, at which this picture looks as photographs do on the mean at `quality`: some
/// are better than the mean at equal settings, others worse. A sample of the picture is encoded at
/// one to three fixed qualities, decoded and scored. Each sample costs about a twentieth of an
/// encoding of 12 megapixels, and up to a third of one of less than two.
///
/// Never falls as `quality` rises. Never more than `quality` for screens and drawings, nor more
/// than the destination's maximum for photographs. From 0.95 to 1 pictures are lowered by less and
/// less.
///
/// `quality` itself where it is 1, for pictures with alpha, of which a sample cannot tell what is
/// seen, for those too small to take a sample from (see sampleOf), and where a sample cannot be
/// encoded or decoded.
///
/// `measurements` are those of `image`, of any layout and depth. Throws std::bad_alloc. May be
/// called by several threads at once.
double qualityForLook(const ImageDestination& destination, const Image& image,
                      const PictureMeasurements& measurements, double quality);

}  // namespace orvane
