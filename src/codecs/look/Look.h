#pragma once

#include "codecs/ImageDestination.h"

namespace orvane {

/// The quality, 0…1, at which this picture looks as photographs do on the mean at `quality`: some
/// are better than the mean at equal settings, others worse. A sample of the picture is encoded at
/// some of nine fixed qualities, decoded and scored: at two or three, and at all of them where none
/// reaches the score. Each time costs a twentieth of an encoding of 12 megapixels, a third of one
/// of less than two.
///
/// Rises with `quality`, where the scores rise. Never more than `quality` for screens and drawings,
/// and at most half the way from there to the destination's maximum for photographs. Between 0.95
/// and 1 it comes nearer to `quality` by degrees.
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
