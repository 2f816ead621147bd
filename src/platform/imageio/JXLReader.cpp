#include <jxl/decode.h>
#include <jxl/decode_cxx.h>

#include <new>

#include "platform/graphics/RowRenderer.h"
#include "platform/imageio/ImageLimits.h"
#include "platform/imageio/ImageReader.h"
#include "platform/imageio/JXLColors.h"

namespace orvane {
namespace {

/// A decoder that holds the whole of `file` and will report `events`.
JxlDecoderPtr makeDecoder(ByteView file, int events) {
  JxlDecoderPtr decoder = JxlDecoderMake(nullptr);
  if (!decoder) throw std::bad_alloc();
  if (JxlDecoderSubscribeEvents(decoder.get(), events) != JXL_DEC_SUCCESS ||
      JxlDecoderSetInput(decoder.get(), file.data(), file.size()) != JXL_DEC_SUCCESS) {
    throw UnreadableImage("libjxl takes no input");
  }
  JxlDecoderCloseInput(decoder.get());
  return decoder;
}

/// Decodes up to `event`, which must be the next to come.
void advance(JxlDecoder* decoder, JxlDecoderStatus event) {
  if (JxlDecoderProcessInput(decoder) != event) throw UnreadableImage("damaged or incomplete");
}

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

/// A picture of this shape without its pixels. Throws UnreadableImage when it is past a limit.
Image shapeOf(const JxlBasicInfo& info, int bitsPerComponent, const ColorSpacePtr& colorSpace) {
  Image image{.width = info.xsize,
              .height = info.ysize,
              .bitsPerComponent = bitsPerComponent,
              .layout = layoutOf(info),
              .alpha = alphaOf(info),
              .colorSpace = colorSpace};
  ImageLimits::check(image.width, image.height, image.bytesPerPixel());
  image.bytesPerRow = image.width * image.bytesPerPixel();
  return image;
}

Image decodePixels(JxlDecoder* decoder, Image shape) {
  const JxlPixelFormat format{static_cast<std::uint32_t>(channelCount(shape.layout)),
                              shape.bitsPerComponent == 16 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8,
                              JXL_NATIVE_ENDIAN, 0};
  const std::size_t size = shape.bytesPerRow * shape.height;
  advance(decoder, JXL_DEC_NEED_IMAGE_OUT_BUFFER);
  const MutablePixelMemory pixels = makePixelMemory(size);
  if (JxlDecoderSetImageOutBuffer(decoder, &format, pixels.get(), size) != JXL_DEC_SUCCESS) {
    throw UnreadableImage("libjxl refuses the pixel memory");
  }
  advance(decoder, JXL_DEC_FULL_IMAGE);
  shape.pixels = pixels;
  return shape;
}

Image rendered(const Image& source, const ColorSpacePtr& colorSpace, int bitsPerComponent) {
  Image image{.width = source.width,
              .height = source.height,
              .bitsPerComponent = bitsPerComponent,
              .layout = ChannelLayout::rgba,
              .alpha = source.alpha == AlphaKind::none ? AlphaKind::none : AlphaKind::straight,
              .colorSpace = colorSpace};
  image.bytesPerRow = image.width * image.bytesPerPixel();
  const MutablePixelMemory pixels = makePixelMemory(image.bytesPerRow * image.height);
  RowRenderer renderer(source, colorSpace, bitsPerComponent, RowRenderer::AlphaForm::straight);
  for (std::size_t y = 0; y < image.height; ++y) {
    renderer.render(y, pixels.get() + y * image.bytesPerRow);
  }
  image.pixels = pixels;
  return image;
}

/// JPEG XL (ISO/IEC 18181-1), bare or in its container (18181-2). libjxl turns the picture upright.
class JXLSource final : public ImageSource {
 public:
  explicit JXLSource(ByteView file) : file_(file) {
    const JxlDecoderPtr decoder = makeDecoder(file, JXL_DEC_BASIC_INFO | JXL_DEC_FRAME);
    advance(decoder.get(), JXL_DEC_BASIC_INFO);
    if (JxlDecoderGetBasicInfo(decoder.get(), &info_) != JXL_DEC_SUCCESS) {
      throw UnreadableImage("no basic information");
    }
    for (std::uint32_t channel = 0; channel < info_.num_extra_channels; ++channel) {
      if (isBlack(decoder.get(), channel)) throw UnreadableImage("CMYK is not supported");
    }
    shapeOf(info_, depthOf(info_), nullptr);  // for its limits
    if (info_.have_animation) frameCount_ = countFrames(decoder.get());
  }

  std::string_view typeIdentifier() const override { return "public.jpeg-xl"; }

  std::size_t frameCount() const override { return frameCount_; }

  Image image() override {
    const JxlDecoderPtr decoder = makeDecoder(file_, JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE);
    advance(decoder.get(), JXL_DEC_COLOR_ENCODING);
    const JXLColors colors = JXLColors::choose(decoder.get(), info_);
    const int depth = depthOf(info_);
    if (colors.decoded == colors.image) {
      return decodePixels(decoder.get(), shapeOf(info_, depth, colors.decoded));
    }
    // In between, 8 bits would be rounded twice.
    const Image decoded = decodePixels(decoder.get(), shapeOf(info_, 16, colors.decoded));
    return rendered(decoded, colors.image, depth);
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
  std::size_t frameCount_ = 1;
};

}  // namespace

const ImageReader jxlReader{
    [](ByteView file) {
      const JxlSignature signature = JxlSignatureCheck(file.data(), file.size());
      return signature == JXL_SIG_CODESTREAM || signature == JXL_SIG_CONTAINER;
    },
    [](ByteView file) -> std::unique_ptr<ImageSource> {
      return std::make_unique<JXLSource>(file);
    }};

}  // namespace orvane
