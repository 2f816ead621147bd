#include <optional>
#include <utility>
#include <vector>

#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "codecs/jxl/JXLColors.h"
#include "codecs/jxl/JXLLibrary.h"
#include "platform/foundation/Memory.h"
#include "platform/graphics/RowRenderer.h"

namespace orvane {
namespace {

using JXLLibrary::advance;
using JXLLibrary::makeDecoder;

bool isBlack(const JxlDecoder* decoder, std::uint32_t channel) {
  JxlExtraChannelInfo info;
  return JxlDecoderGetExtraChannelInfo(decoder, channel, &info) == JXL_DEC_SUCCESS &&
         info.type == JXL_CHANNEL_BLACK;
}

/// The number of the extra channel that makes the colours C, M, Y, K; absent for other pictures.
std::optional<std::uint32_t> blackOf(const JxlDecoder* decoder, const JxlBasicInfo& info) {
  for (std::uint32_t channel = 0; channel < info.num_extra_channels; ++channel) {
    if (isBlack(decoder, channel)) return channel;
  }
  return std::nullopt;
}

ChannelLayout layoutOf(const JxlBasicInfo& info) {
  if (info.num_color_channels == 1) {
    return info.alpha_bits == 0 ? ChannelLayout::gray : ChannelLayout::grayAlpha;
  }
  return ChannelLayout::rgba;  // what libjxl fills in where there is no alpha is all bits set
}

AlphaKind alphaOf(const JxlBasicInfo& info) {
  if (info.alpha_bits == 0) return AlphaKind::none;
  return info.alpha_premultiplied ? AlphaKind::premultiplied : AlphaKind::straight;
}

int depthOf(const JxlBasicInfo& info) {
  return info.bits_per_sample > 8 || info.exponent_bits_per_sample > 0 ? 16 : 8;
}

/// libjxl 0.7 ends the process when an allocation fails. It took up to 25 bytes per pixel for
/// upright opaque 8-bit pictures, up to 61 for others, which it holds whole as floats, and 11 MiB
/// for the smallest picture.
void requireMemory(const JxlBasicInfo& info) {
  const bool isPlain =
      info.num_extra_channels == 0 && depthOf(info) == 8 && info.orientation == JXL_ORIENT_IDENTITY;
  constexpr std::size_t base = std::size_t{12} << 20;
  const std::size_t pixels = std::size_t{info.xsize} * info.ysize;
  Memory::require(base + pixels * (isPlain ? 26 : 64));
}

JxlPixelFormat formatOf(std::size_t channels, int bitsPerComponent) {
  return {static_cast<std::uint32_t>(channels),
          bitsPerComponent == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
}

void requireTaken(JxlDecoderStatus status) {
  if (status != JXL_DEC_SUCCESS) throw UnreadableImage("libjxl refuses the pixel memory");
}

/// Allocates `image`, whose form has been chosen, as what the decoder fills next. Returns its
/// pixels.
std::uint8_t* setOutput(JxlDecoder* decoder, Image& image) {
  ImageLimits::check(image.width, image.height, image.bytesPerPixel());
  const JxlPixelFormat format = formatOf(channelCount(image.layout), image.bitsPerComponent);
  advance(decoder, JXL_DEC_NEED_IMAGE_OUT_BUFFER);
  std::uint8_t* pixels = allocatePackedRows(image);
  requireTaken(
      JxlDecoderSetImageOutBuffer(decoder, &format, pixels, image.bytesPerRow * image.height));
  return pixels;
}

// MARK: Inks

/// Turns the colours C, M, Y and alpha, interleaved, and black beside them, all 0 for full ink,
/// into C, M, Y, K, 0 for none, and alpha beside them.
template <typename Sample>
void swapAlphaForBlack(Sample* colors, Sample* black, std::size_t pixels) {
  for (std::size_t i = 0; i < pixels; ++i, colors += 4) {
    std::swap(colors[3], black[i]);
    for (int ink = 0; ink < 4; ++ink) colors[ink] = static_cast<Sample>(~colors[ink]);
  }
}

template <typename Sample>
void setAlpha(Sample* pixels, const Sample* alpha, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) pixels[4 * i + 3] = alpha[i];
}

/// A picture of inks and straight alpha in sRGB.
template <typename Sample>
Image imageOfInks(JxlDecoder* decoder, const JxlBasicInfo& info, std::uint32_t black) {
  constexpr int depth = 8 * sizeof(Sample);
  Image inks{.width = info.xsize,
             .height = info.ysize,
             .bitsPerComponent = depth,
             .layout = ChannelLayout::cmyk,
             .colorSpace = inkSpace(decoder)};
  auto* colors = reinterpret_cast<Sample*>(setOutput(decoder, inks));
  const std::size_t count = inks.width * inks.height;
  std::vector<Sample> beside(count);
  const JxlPixelFormat format = formatOf(1, depth);
  requireTaken(JxlDecoderSetExtraChannelBuffer(decoder, &format, beside.data(),
                                               count * sizeof(Sample), black));
  advance(decoder, JXL_DEC_FULL_IMAGE);
  swapAlphaForBlack(colors, beside.data(), count);

  Image image = inks;
  image.layout = ChannelLayout::rgba;
  image.alpha = alphaOf(info);
  image.colorSpace = ColorSpace::sRGB();
  std::uint8_t* rows = allocatePackedRows(image);
  RowRenderer renderer(inks, image.colorSpace, depth, RowRenderer::AlphaForm::straight);
  for (std::size_t y = 0; y < image.height; ++y) renderer.render(y, rows + y * image.bytesPerRow);
  setAlpha(reinterpret_cast<Sample*>(rows), beside.data(), count);
  return image;
}

/// JPEG XL (ISO/IEC 18181-1), bare or in its container (18181-2). libjxl turns the picture upright.
class JXLSource final : public ImageSource {
 public:
  explicit JXLSource(ByteView file) : ImageSource(ImageFormat::jxl), file_(file) {
    const JxlDecoderPtr decoder = makeDecoder(file, JXL_DEC_BASIC_INFO | JXL_DEC_FRAME);
    advance(decoder.get(), JXL_DEC_BASIC_INFO);
    if (JxlDecoderGetBasicInfo(decoder.get(), &info_) != JXL_DEC_SUCCESS) {
      throw UnreadableImage("no basic information");
    }
    black_ = blackOf(decoder.get(), info_);
    if (black_ && (info_.num_color_channels != 3 || info_.alpha_premultiplied ||
                   !info_.uses_original_profile)) {
      throw UnreadableImage("inks in a form that is not supported");
    }
    const std::size_t channels = channelCount(layoutOf(info_));
    setSize(info_.xsize, info_.ysize, channels * static_cast<std::size_t>(depthOf(info_) / 8));
    if (info_.have_animation) setFrameCount(countFrames(decoder.get()));
  }

  Image image() override {
    requireMemory(info_);
    const JxlDecoderPtr decoder = makeDecoder(file_, JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE);
    advance(decoder.get(), JXL_DEC_COLOR_ENCODING);
    if (black_) {
      return depthOf(info_) == 16 ? imageOfInks<std::uint16_t>(decoder.get(), info_, *black_)
                                  : imageOfInks<std::uint8_t>(decoder.get(), info_, *black_);
    }
    const JXLColors colors = JXLColors::choose(decoder.get(), info_);
    const bool isConverted = colors.decoded != colors.image;
    // A picture in XYB has more shades than 8 linear bits can hold.
    const bool isDeeper = !info_.uses_original_profile && colors.image->isLinear();
    const int depth = isDeeper ? 16 : depthOf(info_);
    Image image{.width = info_.xsize,
                .height = info_.ysize,
                // In between, 8 bits would be rounded twice.
                .bitsPerComponent = isConverted ? 16 : depth,
                .layout = layoutOf(info_),
                .alpha = alphaOf(info_),
                .colorSpace = colors.decoded};
    setOutput(decoder.get(), image);
    advance(decoder.get(), JXL_DEC_FULL_IMAGE);
    return isConverted ? rendered(image, colors.image, depth) : image;
  }

 private:
  /// Frame headers only: libjxl skips the pixels of frames that nobody has asked for.
  static std::size_t countFrames(JxlDecoder* decoder) {
    std::size_t count = 0;
    JxlDecoderStatus status = JxlDecoderProcessInput(decoder);
    for (; status == JXL_DEC_FRAME; status = JxlDecoderProcessInput(decoder)) ++count;
    if (status != JXL_DEC_SUCCESS || count == 0) throw UnreadableImage("damaged or incomplete");
    return count;
  }

  ByteView file_;
  JxlBasicInfo info_{};
  std::optional<std::uint32_t> black_;  ///< the number of its channel, in a picture of inks
};

}  // namespace

const ImageReader jxlReader{
    [](ByteView file) {
      const JxlSignature signature = JxlSignatureCheck(file.data(), file.size());
      return signature == JXL_SIG_CODESTREAM || signature == JXL_SIG_CONTAINER;
    },
    openAs<JXLSource>};

}  // namespace orvane
