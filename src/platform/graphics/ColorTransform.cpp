#include "platform/graphics/ColorTransform.h"

#include "platform/graphics/ICCProfile.h"

namespace orvane {
namespace {

cmsUInt32Number pixelFormat(ChannelLayout layout, int bitsPerComponent) {
  const cmsUInt32Number bytes = bitsPerComponent == 16 ? 2 : 1;
  switch (layout) {
    case ChannelLayout::gray:
      return COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | BYTES_SH(bytes);
    case ChannelLayout::grayAlpha:
      return COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1) | EXTRA_SH(1) | BYTES_SH(bytes);
    case ChannelLayout::rgb:
      return COLORSPACE_SH(PT_RGB) | CHANNELS_SH(3) | BYTES_SH(bytes);
    case ChannelLayout::rgba:
      return COLORSPACE_SH(PT_RGB) | CHANNELS_SH(3) | EXTRA_SH(1) | BYTES_SH(bytes);
    case ChannelLayout::cmyk:
      return COLORSPACE_SH(PT_CMYK) | CHANNELS_SH(4) | BYTES_SH(bytes);
  }
  return 0;
}

}  // namespace

ColorTransform::ColorTransform(const ColorSpace& source, ChannelLayout layout,
                               const ColorSpace& target, int bitsPerComponent) {
  const ProfileHandle from = ICCProfile::open(source.iccData());
  const ProfileHandle to = ICCProfile::open(target.iccData());
  if (!from || !to) return;
  TransformHandle transform(cmsCreateTransform(
      from.get(), pixelFormat(layout, bitsPerComponent), to.get(),
      pixelFormat(ChannelLayout::rgba, bitsPerComponent), INTENT_RELATIVE_COLORIMETRIC,
      cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOCACHE));
  transform_ = std::move(transform);
}

void ColorTransform::convert(const void* row, void* rgba, std::size_t count) const {
  cmsDoTransform(transform_.get(), row, rgba, static_cast<cmsUInt32Number>(count));
}

}  // namespace orvane
