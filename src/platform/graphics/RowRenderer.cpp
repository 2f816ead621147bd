#include "platform/graphics/RowRenderer.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "platform/graphics/ColorTransform.h"

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

/// Converts any layout to R, G, B, A of the same depth without touching the colours.
template <typename Component>
void unpack(const Component* in, ChannelLayout layout, std::size_t width, Component* out) {
  constexpr auto opaque = static_cast<Component>(maximum<Component>);
  switch (layout) {
    case ChannelLayout::gray:
      for (std::size_t x = 0; x < width; ++x, out += 4) {
        out[0] = out[1] = out[2] = in[x];
        out[3] = opaque;
      }
      break;
    case ChannelLayout::grayAlpha:
      for (std::size_t x = 0; x < width; ++x, out += 4) {
        out[0] = out[1] = out[2] = in[x * 2];
        out[3] = in[x * 2 + 1];
      }
      break;
    case ChannelLayout::rgb:
      for (std::size_t x = 0; x < width; ++x, out += 4) {
        std::copy_n(in + x * 3, 3, out);
        out[3] = opaque;
      }
      break;
    case ChannelLayout::rgba:
      std::copy_n(in, width * 4, out);
      break;
    case ChannelLayout::cmyk:
      for (std::size_t x = 0; x < width; ++x, in += 4, out += 4) {
        const std::uint32_t light = opaque - in[3];
        for (int ink = 0; ink < 3; ++ink) {
          out[ink] = multiply<Component>(static_cast<std::uint32_t>(opaque - in[ink]), light);
        }
        out[3] = opaque;
      }
      break;
  }
}

template <typename Component>
void copyAlpha(const Component* in, ChannelLayout layout, std::size_t width, Component* rgba) {
  const std::size_t channels = channelCount(layout);
  const bool hasAlpha = layout == ChannelLayout::grayAlpha || layout == ChannelLayout::rgba;
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

}  // namespace

struct RowRenderer::Steps {
  Image image;
  int bitsPerComponent;
  AlphaForm alphaForm;
  std::optional<ColorTransform> transform;
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
    if (transform) {
      if (alpha == AlphaKind::premultiplied) {
        in = madeStraight(in);
        alpha = AlphaKind::straight;
      }
      transform->convert(in, out, image.width);
      copyAlpha(in, image.layout, image.width, out);
    } else {
      unpack(in, image.layout, image.width, out);
    }
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
  ColorTransform transform(*image.colorSpace, image.layout, *target,
                           std::max(image.bitsPerComponent, bitsPerComponent));
  if (transform.isPossible()) steps_->transform = std::move(transform);
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
