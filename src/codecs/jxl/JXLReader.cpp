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

/// Fills `image`, whose form has been chosen.
void decodePixels(JxlDecoder* decoder, Image& image) {
  ImageLimits::check(image.width, image.height, image.bytesPerPixel());
  const JxlPixelFormat format{static_cast<std::uint32_t>(channelCount(image.layout)),
                              image.bitsPerComponent == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8,
                              JXL_NATIVE_ENDIAN, 0};
  advance(decoder, JXL_DEC_NEED_IMAGE_OUT_BUFFER);
  std::uint8_t* pixels = allocatePackedRows(image);
  const std::size_t size = image.bytesPerRow * image.height;
  if (JxlDecoderSetImageOutBuffer(decoder, &format, pixels, size) != JXL_DEC_SUCCESS) {
    throw UnreadableImage("libjxl refuses the pixel memory");
  }
  advance(decoder, JXL_DEC_FULL_IMAGE);
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
    for (std::uint32_t channel = 0; channel < info_.num_extra_channels; ++channel) {
      if (isBlack(decoder.get(), channel)) throw UnreadableImage("CMYK is not supported");
    }
    const std::size_t channels = channelCount(layoutOf(info_));
    setSize(info_.xsize, info_.ysize, channels * static_cast<std::size_t>(depthOf(info_) / 8));
    if (info_.have_animation) setFrameCount(countFrames(decoder.get()));
  }

  Image image() override {
    requireMemory(info_);
    const JxlDecoderPtr decoder = makeDecoder(file_, JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE);
    advance(decoder.get(), JXL_DEC_COLOR_ENCODING);
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
    decodePixels(decoder.get(), image);
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
};

}  // namespace

const ImageReader jxlReader{
    [](ByteView file) {
      const JxlSignature signature = JxlSignatureCheck(file.data(), file.size());
      return signature == JXL_SIG_CODESTREAM || signature == JXL_SIG_CONTAINER;
    },
    openAs<JXLSource>};

}  // namespace orvane
