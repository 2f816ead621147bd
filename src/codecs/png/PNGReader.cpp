#include <png.h>

#include <array>
#include <bit>
#include <cstdio>
#include <cstring>
#include <limits>

#include "codecs/Exif.h"
#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "codecs/png/PNGChunks.h"
#include "codecs/png/PNGColorSpace.h"

namespace orvane {
namespace {

struct ReadStructDeleter {
  void operator()(png_structp png) const { png_destroy_read_struct(&png, nullptr, nullptr); }
};
using ReadStruct = std::unique_ptr<png_struct, ReadStructDeleter>;

struct InfoStructDeleter {
  png_structp png;
  void operator()(png_infop info) const { png_destroy_info_struct(png, &info); }
};
using InfoStruct = std::unique_ptr<png_info, InfoStructDeleter>;

/// Decodes one picture with libpng, which reads only the chunks that pixels depend on: IHDR, PLTE,
/// tRNS, IDAT and IEND.
class PNGDecoder {
 public:
  explicit PNGDecoder(ByteView file)
      : rest_(file),
        png_(png_create_read_struct(PNG_LIBPNG_VER_STRING, this, fail, ignoreWarning)),
        info_(png_create_info_struct(png_.get()), {png_.get()}) {
    if (!info_) throw std::bad_alloc();
  }
  PNGDecoder(const PNGDecoder&) = delete;
  PNGDecoder& operator=(const PNGDecoder&) = delete;

  /// Returns the picture's size, depth and layout, without pixels and colour space.
  Image readHeader();

  /// Decodes the packed rows of `image`, which readHeader() has returned.
  void readPixels(const Image& image, std::uint8_t* pixels);

 private:
  /// Makes calls to libpng, which leaves them by a long jump at its first error. The calls must not
  /// create objects with destructors, nor change variables that are used afterwards.
  template <typename Calls>
  void run(const Calls& calls) {
    if (setjmp(png_jmpbuf(png_.get())) != 0) throw UnreadableImage(message_.data());
    calls(png_.get(), info_.get());
  }

  [[noreturn]] static void fail(png_structp png, png_const_charp message) {
    auto& into = static_cast<PNGDecoder*>(png_get_error_ptr(png))->message_;
    std::snprintf(into.data(), into.size(), "%s", message);
    png_longjmp(png, 1);
  }
  static void ignoreWarning(png_structp, png_const_charp) {}

  static void supply(png_structp png, png_bytep into, std::size_t count) {
    ByteView& rest = static_cast<PNGDecoder*>(png_get_io_ptr(png))->rest_;
    if (count > rest.size()) png_error(png, "the file ends too early");
    std::memcpy(into, rest.data(), count);
    rest = rest.subspan(count);
  }

  ByteView rest_;  ///< the bytes that libpng has not read yet
  std::array<char, 128> message_{};
  ReadStruct png_;
  InfoStruct info_;
};

Image PNGDecoder::readHeader() {
  run([this](png_structp png, png_infop info) {
    png_set_read_fn(png, this, supply);
    constexpr int allButThoseForPixels = -1;
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, allButThoseForPixels);
    png_set_user_limits(png, ImageLimits::maximumSide, ImageLimits::maximumSide);
    // Some writers declare a smaller deflate window than they use.
    png_set_option(png, PNG_MAXIMUM_INFLATE_WINDOW, PNG_OPTION_ON);
    png_read_info(png, info);
  });
  const int colorType = png_get_color_type(png_.get(), info_.get());
  const bool isGray = (colorType & PNG_COLOR_MASK_COLOR) == 0;
  // png_get_valid would also report a tRNS chunk that libpng has discarded.
  int transparentCount = 0;
  png_get_tRNS(png_.get(), info_.get(), nullptr, &transparentCount, nullptr);
  const bool hasAlpha = (colorType & PNG_COLOR_MASK_ALPHA) != 0 || transparentCount > 0;
  const bool isDeep = png_get_bit_depth(png_.get(), info_.get()) == 16;
  // Opaque 8-bit colours get a filler byte: rendering then needs no copy of the picture.
  const ChannelLayout color = hasAlpha || !isDeep ? ChannelLayout::rgba : ChannelLayout::rgb;
  const ChannelLayout gray = hasAlpha ? ChannelLayout::grayAlpha : ChannelLayout::gray;
  return {.width = png_get_image_width(png_.get(), info_.get()),
          .height = png_get_image_height(png_.get(), info_.get()),
          .bitsPerComponent = isDeep ? 16 : 8,
          .layout = isGray ? gray : color,
          .alpha = hasAlpha ? AlphaKind::straight : AlphaKind::none};
}

void PNGDecoder::readPixels(const Image& image, std::uint8_t* pixels) {
  run([&image, pixels](png_structp png, png_infop info) {
    png_set_expand(png);  // palettes to colours, less than 8 bits to 8, tRNS to alpha
    if (image.bitsPerComponent == 16 && std::endian::native == std::endian::little) {
      png_set_swap(png);
    }
    if (image.layout == ChannelLayout::rgba && image.alpha == AlphaKind::none) {
      png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    }
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);
    if (png_get_rowbytes(png, info) != image.bytesPerRow) png_error(png, "unforeseen row size");
    for (int pass = 0; pass < passes; ++pass) {
      for (std::size_t y = 0; y < image.height; ++y) {
        png_read_row(png, pixels + y * image.bytesPerRow, nullptr);
      }
    }
    png_read_end(png, nullptr);
  });
}

/// acTL holds the number of frames, 1 to 2³¹ − 1, and the number of plays (PNG clause 11.3.6.1).
std::size_t frameCountIn(const std::optional<ByteView>& acTL) {
  const std::uint32_t count = acTL && acTL->size() == 8 ? readPNGInteger(*acTL) : 1;
  return count >= 1 && count <= std::numeric_limits<std::int32_t>::max() ? count : 1;
}

class PNGSource final : public ImageSource {
 public:
  explicit PNGSource(ByteView file)
      : ImageSource(ImageFormat::png), file_(file), chunks_(PNGChunks::read(file)) {
    const Image form = PNGDecoder(file).readHeader();
    setSize(form.width, form.height, form.bytesPerPixel());
    setFrameCount(frameCountIn(chunks_.animationControl));
    if (const auto& exif = chunks_.exchangeableImageMetadata) {
      setOrientation(Exif::orientation(*exif));
    }
  }

  Image image() override {
    PNGDecoder decoder(file_);
    Image image = decoder.readHeader();
    const bool isGray =
        image.layout == ChannelLayout::gray || image.layout == ChannelLayout::grayAlpha;
    image.colorSpace =
        pngColorSpace(chunks_, isGray ? ColorSpace::Model::gray : ColorSpace::Model::rgb);
    decoder.readPixels(image, allocatePackedRows(image));
    return image;
  }

 private:
  ByteView file_;
  PNGChunks chunks_;
};

}  // namespace

const ImageReader pngReader{hasPNGSignature, openAs<PNGSource>};

}  // namespace orvane
