#include "platform/graphics/RowRenderer.h"

#include <algorithm>
#include <limits>
#include <span>
#include <vector>

#include "platform/graphics/ICCProfile.h"

namespace orvane {
namespace {

template <typename Component>
constexpr std::uint32_t maximum = std::numeric_limits<Component>::max();

/// a·b/max, rounded to nearest.
template <typename Component>
Component multiply(std::uint32_t a, std::uint32_t b) {
  constexpr std::uint32_t max = maximum<Component>;
  return static_cast<Component>((a * b + max / 2) / max);  // below 2³² for 16 bits too
}

bool hasAlphaChannel(ChannelLayout layout) {
  return layout == ChannelLayout::grayAlpha || layout == ChannelLayout::rgba;
}

/// Copies the colours of any layout but CMYK to R, G, B of the same depth. The fourth component of
/// each pixel stays as it is.
template <typename Component>
void copyColors(const Component* in, ChannelLayout layout, std::size_t width, Component* rgba) {
  const std::size_t channels = channelCount(layout);
  const std::size_t step = channels < 3 ? 0 : 1;  // grey stands for R, G and B
  for (std::size_t x = 0; x < width; ++x, in += channels, rgba += 4) {
    for (std::size_t c = 0; c < 3; ++c) rgba[c] = in[c * step];
  }
}

/// Uncalibrated CMYK to R, G, B.
template <typename Component>
void convertInks(const Component* cmyk, std::size_t width, Component* rgba) {
  constexpr std::uint32_t max = maximum<Component>;
  for (std::size_t x = 0; x < width; ++x, cmyk += 4, rgba += 4) {
    for (std::size_t c = 0; c < 3; ++c) rgba[c] = multiply<Component>(max - cmyk[c], max - cmyk[3]);
  }
}

template <typename Component>
void copyAlpha(const Component* in, ChannelLayout layout, std::size_t width, Component* rgba) {
  const std::size_t channels = channelCount(layout);
  const bool hasAlpha = hasAlphaChannel(layout);
  for (std::size_t x = 0; x < width; ++x) {
    rgba[x * 4 + 3] =
        hasAlpha ? in[(x + 1) * channels - 1] : static_cast<Component>(maximum<Component>);
  }
}

template <typename Component>
void premultiply(std::span<Component> row) {
  for (std::size_t at = 0; at < row.size(); at += 4) {
    const Component alpha = row[at + 3];
    if (alpha == maximum<Component>) continue;
    for (std::size_t c = 0; c < 3; ++c) row[at + c] = multiply<Component>(row[at + c], alpha);
  }
}

template <typename Component>
void unpremultiply(std::span<Component> row, std::size_t channels) {
  for (std::size_t at = 0; at < row.size(); at += channels) {
    const std::uint64_t alpha = row[at + channels - 1];
    if (alpha == maximum<Component>) continue;
    for (std::size_t c = 0; c + 1 < channels; ++c) {
      const std::uint64_t scaled =
          alpha == 0 ? 0 : (row[at + c] * std::uint64_t{maximum<Component>} + alpha / 2) / alpha;
      row[at + c] = static_cast<Component>(std::min<std::uint64_t>(scaled, maximum<Component>));
    }
  }
}

void changeDepth(std::span<const std::uint8_t> in, std::uint16_t* out) {
  for (const std::uint8_t value : in) *out++ = static_cast<std::uint16_t>(value * 257);
}

void changeDepth(std::span<const std::uint16_t> in, std::uint8_t* out) {
  for (const std::uint16_t value : in) *out++ = static_cast<std::uint8_t>((value + 128u) / 257);
}

/// Whether the numbers of `source` are taken as those of `target`. Grey and CMYK without a profile
/// have no other meaning than their numbers.
bool sameNumbers(const ColorSpace& source, const ColorSpace& target) {
  return source.iccData().empty() || &source == &target ||
         std::ranges::equal(source.iccData(), target.iccData());
}

cmsUInt32Number pixelFormat(ChannelLayout layout, int bitsPerComponent) {
  const auto channels = static_cast<cmsUInt32Number>(channelCount(layout));
  const cmsUInt32Number alphas = hasAlphaChannel(layout) ? 1 : 0;
  const cmsUInt32Number colors = channels - alphas;
  const cmsUInt32Number model = colors == 1 ? PT_GRAY : colors == 3 ? PT_RGB : PT_CMYK;
  return COLORSPACE_SH(model) | CHANNELS_SH(colors) | EXTRA_SH(alphas) |
         BYTES_SH(static_cast<cmsUInt32Number>(bitsPerComponent / 8));
}

/// A conversion of straight pixels of `source` to R, G, B of `target`, which leaves the fourth
/// component as it is. Null when Little CMS cannot convert between the profiles.
TransformHandle makeTransform(const ColorSpace& source, ChannelLayout layout,
                              const ColorSpace& target, int bitsPerComponent) {
  const ProfileHandle from = ICCProfile::open(source.iccData());
  const ProfileHandle to = ICCProfile::open(target.iccData());
  if (!from || !to) return nullptr;
  return TransformHandle(cmsCreateTransform(
      from.get(), pixelFormat(layout, bitsPerComponent), to.get(),
      pixelFormat(ChannelLayout::rgba, bitsPerComponent), INTENT_RELATIVE_COLORIMETRIC,
      cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_NOCACHE));
}

}  // namespace

struct RowRenderer::Steps {
  Image image;
  int bitsPerComponent;
  AlphaForm alphaForm;
  TransformHandle transform;               ///< null when the numbers stay as they are
  std::vector<std::uint16_t> straightRow;  ///< the source row, straight, 8 or 16 bits
  std::vector<std::uint16_t> deepRow;      ///< a row of 16 bits when only one depth is 16

  template <typename Source, typename Target>
  void render(const Source* in, Target* out) {
    if constexpr (sizeof(Source) == sizeof(Target)) {
      renderAtOneDepth(in, out);
    } else if constexpr (sizeof(Source) < sizeof(Target)) {
      deepRow.resize(image.width * channelCount(image.layout));
      changeDepth(std::span<const Source>(in, deepRow.size()), deepRow.data());
      renderAtOneDepth<std::uint16_t>(deepRow.data(), out);
    } else {
      deepRow.resize(image.width * 4);
      renderAtOneDepth(in, deepRow.data());
      changeDepth(std::span<const std::uint16_t>(deepRow), out);
    }
  }

  template <typename Component>
  void renderAtOneDepth(const Component* in, Component* out) {
    const std::span<Component> row(out, image.width * 4);
    AlphaKind alpha = image.alpha;
    if (transform && alpha == AlphaKind::premultiplied) {
      in = madeStraight(in);
      alpha = AlphaKind::straight;
    }
    if (transform) {
      cmsDoTransform(transform.get(), in, out, static_cast<cmsUInt32Number>(image.width));
    } else if (image.layout == ChannelLayout::cmyk) {
      convertInks(in, image.width, out);
    } else {
      copyColors(in, image.layout, image.width, out);
    }
    copyAlpha(in, image.layout, image.width, out);
    if (alpha == AlphaKind::straight && alphaForm == AlphaForm::premultiplied) premultiply(row);
    if (alpha == AlphaKind::premultiplied && alphaForm == AlphaForm::straight) {
      unpremultiply(row, 4);
    }
  }

  template <typename Component>
  const Component* madeStraight(const Component* in) {
    const std::size_t channels = channelCount(image.layout);
    const std::size_t count = image.width * channels;
    straightRow.resize(count);
    auto* row = reinterpret_cast<Component*>(straightRow.data());
    std::copy_n(in, count, row);
    unpremultiply(std::span<Component>(row, count), channels);
    return row;
  }
};

RowRenderer::RowRenderer(const Image& image, const ColorSpacePtr& target, int bitsPerComponent,
                         AlphaForm alphaForm)
    : steps_(std::make_unique<Steps>(
          Steps{.image = image, .bitsPerComponent = bitsPerComponent, .alphaForm = alphaForm})) {
  if (sameNumbers(*image.colorSpace, *target)) return;
  steps_->transform = makeTransform(*image.colorSpace, image.layout, *target,
                                    std::max(image.bitsPerComponent, bitsPerComponent));
}

RowRenderer::~RowRenderer() = default;

void RowRenderer::render(std::size_t y, void* out) {
  const std::uint8_t* row = steps_->image.row(y);
  const auto* deepRow = reinterpret_cast<const std::uint16_t*>(row);
  auto* bytes = static_cast<std::uint8_t*>(out);
  auto* words = static_cast<std::uint16_t*>(out);
  if (steps_->image.bitsPerComponent == 8) {
    steps_->bitsPerComponent == 8 ? steps_->render(row, bytes) : steps_->render(row, words);
  } else {
    steps_->bitsPerComponent == 8 ? steps_->render(deepRow, bytes) : steps_->render(deepRow, words);
  }
}

Image rendered(const Image& image, const ColorSpacePtr& target, int bitsPerComponent) {
  Image result{.width = image.width,
               .height = image.height,
               .bitsPerComponent = bitsPerComponent,
               .layout = ChannelLayout::rgba,
               .alpha = image.alpha == AlphaKind::none ? AlphaKind::none : AlphaKind::straight,
               .colorSpace = target};
  std::uint8_t* pixels = allocatePackedRows(result);
  RowRenderer renderer(image, target, bitsPerComponent, RowRenderer::AlphaForm::straight);
  for (std::size_t y = 0; y < result.height; ++y) {
    renderer.render(y, pixels + y * result.bytesPerRow);
  }
  return result;
}

}  // namespace orvane
