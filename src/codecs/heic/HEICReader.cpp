#include <algorithm>
#include <array>
#include <limits>

#include "codecs/ImageItems.h"
#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "codecs/heic/HEICContext.h"
#include "platform/graphics/ICCProfile.h"

namespace orvane {
namespace {

// MARK: Colour space

/// The ICC profile that belongs to the picture; empty when there is none.
Bytes iccProfile(const heif_image_handle* handle) {
  const std::size_t size = heif_image_handle_get_raw_color_profile_size(handle);
  if (size == 0) return {};
  ImageLimits::checkICC(size);
  Bytes profile(size);
  const heif_error error = heif_image_handle_get_raw_color_profile(handle, profile.data());
  return error.code == heif_error_Ok ? profile : Bytes{};
}

/// The code points of the file's colr box, or else those of the HEVC stream; unspecified when
/// libheif reports neither.
CodePoints codePoints(const heif_image_handle* handle, const heif_image* decoded) {
  HEIFColorProfile profile = HEIFLibrary::colorProfile(handle);
  if (profile == nullptr) profile = HEIFLibrary::colorProfile(decoded);
  if (profile == nullptr) return {};
  return {static_cast<std::uint16_t>(profile->color_primaries),
          static_cast<std::uint16_t>(profile->transfer_characteristics)};
}

// MARK: Pixels

/// One plane of a decoded picture, whose samples are stretched to the full range of `Sample`.
template <class Sample>
class Channel {
 public:
  Channel(const heif_image* image, heif_channel channel)
      : plane_(heif_image_get_plane_readonly(image, channel, &stride_)),
        width_(static_cast<std::size_t>(heif_image_get_width(image, channel))),
        bitDepth_(heif_image_get_bits_per_pixel_range(image, channel)),
        scaled_(std::size_t{1} << bitDepth_) {
    const std::size_t from = scaled_.size() - 1;
    constexpr std::size_t to = std::numeric_limits<Sample>::max();
    for (std::size_t value = 0; value <= from; ++value) {
      scaled_[value] = static_cast<Sample>((value * to + from / 2) / from);
    }
  }

  /// Writes row `y` to every `step`-th sample of `out`.
  void writeRow(std::size_t y, Sample* out, std::size_t step) const {
    const std::uint8_t* row = plane_ + y * static_cast<std::size_t>(stride_);
    if (bitDepth_ > 8) {
      scale(reinterpret_cast<const std::uint16_t*>(row), out, step);
    } else {
      scale(row, out, step);
    }
  }

 private:
  template <class Stored>
  void scale(const Stored* row, Sample* out, std::size_t step) const {
    const std::size_t mask = scaled_.size() - 1;
    for (std::size_t x = 0; x < width_; ++x) out[x * step] = scaled_[row[x] & mask];
  }

  int stride_ = 0;
  const std::uint8_t* plane_;
  std::size_t width_;
  int bitDepth_;
  std::vector<Sample> scaled_;  ///< by stored value
};

/// The planes that hold the channels of a picture, in order.
std::vector<heif_channel> planesFor(const Image& image) {
  // R, G and B are equal in a picture with a grey profile.
  std::vector<heif_channel> planes{heif_channel_G};
  if (channelCount(image.layout) >= 3) planes = {heif_channel_R, heif_channel_G, heif_channel_B};
  if (image.alpha != AlphaKind::none) planes.push_back(heif_channel_Alpha);
  return planes;
}

/// Allocates the rows of `target`, whose size, layout and depth are set, and fills them with the
/// planes of `source`.
template <class Sample>
void interleave(const heif_image* source, Image& target) {
  const std::size_t step = channelCount(target.layout);
  std::vector<Channel<Sample>> channels;
  for (const heif_channel plane : planesFor(target)) channels.emplace_back(source, plane);
  auto* row = reinterpret_cast<Sample*>(allocatePackedRows(target));
  for (std::size_t y = 0; y < target.height; ++y, row += target.width * step) {
    const bool hasFiller = channels.size() < step;
    if (hasFiller) std::fill_n(row, target.width * step, std::numeric_limits<Sample>::max());
    for (std::size_t c = 0; c < channels.size(); ++c) channels[c].writeRow(y, row + c, step);
  }
}

/// Whether all planes have this size. Alpha is a picture of its own in the file and may have
/// another one.
bool planesAgree(const heif_image* image, std::size_t width, std::size_t height) {
  constexpr std::array channels{heif_channel_R, heif_channel_G, heif_channel_B, heif_channel_Alpha};
  return std::ranges::all_of(channels, [&](heif_channel channel) {
    if (channel == heif_channel_Alpha && !heif_image_has_channel(image, channel)) return true;
    return heif_image_get_width(image, channel) == static_cast<int>(width) &&
           heif_image_get_height(image, channel) == static_cast<int>(height);
  });
}

bool isDeep(const heif_image* image, heif_channel channel) {
  return heif_image_has_channel(image, channel) != 0 &&
         heif_image_get_bits_per_pixel_range(image, channel) > 8;
}

// MARK: Source

class HEICSource final : public ImageSource {
 public:
  explicit HEICSource(ByteView file)
      : ImageSource(ImageFormat::heic), items_(file), context_(makeHEICContext()) {
    items_.checkReferences();
    patchedFile_ = items_.withoutIdentities();  // libheif 1.15 refuses files with identities
    if (!patchedFile_.empty()) file = patchedFile_;
    HEIFLibrary::check(heif_context_read_from_memory_without_copy(context_.get(), file.data(),
                                                                  file.size(), nullptr));
    heif_image_handle* primary = nullptr;
    HEIFLibrary::check(heif_context_get_primary_image_handle(context_.get(), &primary));
    handle_.reset(primary);
    const bool deep = heif_image_handle_get_luma_bits_per_pixel(primary) > 8;
    // A negative side is past the limits as well.
    setSize(static_cast<std::uint64_t>(heif_image_handle_get_width(primary)),
            static_cast<std::uint64_t>(heif_image_handle_get_height(primary)), deep ? 8 : 4);
    setOrientation(derivedTransformations().orientation());
    setFrameCount(static_cast<std::size_t>(
        std::max(1, heif_context_get_number_of_top_level_images(context_.get()))));
  }

  Image image() override;

 private:
  /// Planes of R, G, B and, if the picture has it, alpha, with the item's own transformations
  /// applied.
  HEIFImage decode() const {
    const HEIFDecodingOptions options = HEIFLibrary::makeDecodingOptions();
    heif_image* decoded = nullptr;
    HEIFLibrary::check(heif_decode_image(handle_.get(), &decoded, heif_colorspace_RGB,
                                         heif_chroma_444, options.get()));
    return HEIFImage(decoded);
  }

  /// The transformations of identity derivations. libheif applies those of the shown item.
  TransformativeProperties derivedTransformations() const {
    TransformativeProperties properties(width(), height());
    items_.addTransformations(properties);
    return properties;
  }

  ImageItems items_;
  Bytes patchedFile_;  ///< empty when the file has no identity derivations
  HEIFContext context_;
  HEIFImageHandle handle_;
};

Image HEICSource::image() try {
  const HEIFImage decoded = decode();
  if (heif_image_get_decoding_warnings(decoded.get(), 0, nullptr, 0) > 0) {
    throw UnreadableImage("decoded with warnings");
  }
  if (!planesAgree(decoded.get(), width(), height())) {
    throw UnreadableImage("not of the size that its header says");
  }

  Image image;
  image.width = width();
  image.height = height();
  const bool deep =
      isDeep(decoded.get(), heif_channel_G) || isDeep(decoded.get(), heif_channel_Alpha);
  image.bitsPerComponent = deep ? 16 : 8;
  if (heif_image_has_channel(decoded.get(), heif_channel_Alpha)) {
    const bool premultiplied = heif_image_handle_is_premultiplied_alpha(handle_.get()) != 0;
    image.alpha = premultiplied ? AlphaKind::premultiplied : AlphaKind::straight;
  }
  const Bytes profile = iccProfile(handle_.get());
  if (ICCProfile::isForGray(profile)) {
    image.layout = image.alpha == AlphaKind::none ? ChannelLayout::gray : ChannelLayout::grayAlpha;
    image.colorSpace = ColorSpace::fromICC(profile, ColorSpace::Model::gray);
  } else if (!profile.empty()) {
    image.colorSpace = ColorSpace::fromICC(profile, ColorSpace::Model::rgb);
  } else {
    image.colorSpace = ColorSpace::fromCodePoints(codePoints(handle_.get(), decoded.get()),
                                                  ColorSpace::Model::rgb);
  }
  if (image.bitsPerComponent == 16) {
    interleave<std::uint16_t>(decoded.get(), image);
  } else {
    interleave<std::uint8_t>(decoded.get(), image);
  }
  return derivedTransformations().cropped(image);
} catch (const HEIFLibrary::Error& error) {
  throw UnreadableImage(error.what());
}

bool recognises(ByteView file) { return ImageItems(file).coding() == "hvc1"; }

std::unique_ptr<ImageSource> open(ByteView file) {
  try {
    return std::make_unique<HEICSource>(file);
  } catch (const HEIFLibrary::Error& error) {
    throw UnreadableImage(error.what());
  }
}

}  // namespace

const ImageReader heicReader{recognises, open};

}  // namespace orvane
