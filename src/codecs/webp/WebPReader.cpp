#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "codecs/Exif.h"
#include "codecs/ImageLimits.h"
#include "codecs/ImageSource.h"
#include "platform/foundation/Handle.h"

namespace orvane {
namespace {

using Demuxer = Handle<WebPDemuxer, WebPDemuxDelete>;
using FrameContent = Handle<WebPIterator, WebPDemuxReleaseIterator>;
using ChunkContent = Handle<WebPChunkIterator, WebPDemuxReleaseChunkIterator>;

/// Throws unless the file is whole.
Demuxer demux(ByteView file) {
  const WebPData data{file.data(), file.size()};
  WebPDemuxState state = WEBP_DEMUX_PARSE_ERROR;
  Demuxer demuxer(WebPDemuxPartial(&data, &state));
  if (!demuxer || state != WEBP_DEMUX_DONE) {
    throw UnreadableImage("the WebP container is damaged or incomplete");
  }
  return demuxer;
}

/// Sets the alpha of a frame's pixels to 255.
void makeOpaque(const WebPBitstreamFeatures& frame, std::uint8_t* pixels, std::size_t bytesPerRow) {
  const auto rowSize = static_cast<std::size_t>(frame.width) * channelCount(ChannelLayout::rgba);
  for (int y = 0; y < frame.height; ++y, pixels += bytesPerRow) {
    for (std::size_t at = 3; at < rowSize; at += 4) pixels[at] = 255;
  }
}

/// Decodes a frame to R, G, B, A with straight alpha, 255 where it has none.
void decode(const WebPData& frame, std::uint8_t* pixels, std::size_t bytesPerRow,
            std::size_t size) {
  WebPDecoderConfig config;
  if (!WebPInitDecoderConfig(&config)) throw UnreadableImage("another version of libwebp");
  config.output.colorspace = MODE_RGBA;
  config.output.is_external_memory = 1;
  config.output.u.RGBA = {.rgba = pixels, .stride = static_cast<int>(bytesPerRow), .size = size};
  if (WebPDecode(frame.bytes, frame.size, &config) != VP8_STATUS_OK) {
    throw UnreadableImage("WebP data is damaged or incomplete");
  }
  // libwebp decodes the alpha of a lossless frame even if the frame's header says that it is not
  // used.
  constexpr int lossless = 2;
  if (config.input.format == lossless && !config.input.has_alpha) {
    makeOpaque(config.input, pixels, bytesPerRow);
  }
}

class WebPSource final : public ImageSource {
 public:
  explicit WebPSource(ByteView file) : ImageSource(ImageFormat::webp), demuxer_(demux(file)) {
    setSize(feature(WEBP_FF_CANVAS_WIDTH), feature(WEBP_FF_CANVAS_HEIGHT),
            channelCount(ChannelLayout::rgba));
    setFrameCount(feature(WEBP_FF_FRAME_COUNT));
    setOrientation(Exif::orientation(chunk("EXIF")));
  }

  /// The first frame at its place on the canvas. The rest of the canvas is transparent.
  Image image() override {
    Image canvas{.width = width(),
                 .height = height(),
                 .layout = ChannelLayout::rgba,
                 .colorSpace = colorSpace()};
    WebPIterator frame{};
    if (!WebPDemuxGetFrame(demuxer_.get(), 1, &frame)) throw UnreadableImage("WebP without frames");
    const FrameContent frameContent(&frame);
    const bool fillsCanvas =
        std::cmp_equal(frame.width, width()) && std::cmp_equal(frame.height, height());
    canvas.alpha = frame.has_alpha || !fillsCanvas ? AlphaKind::straight : AlphaKind::none;

    std::uint8_t* pixels = allocatePackedRows(canvas);
    const std::size_t size = canvas.bytesPerRow * canvas.height;
    if (!fillsCanvas) std::memset(pixels, 0, size);
    const std::size_t start = static_cast<std::size_t>(frame.y_offset) * canvas.bytesPerRow +
                              static_cast<std::size_t>(frame.x_offset) * canvas.bytesPerPixel();
    decode(frame.fragment, pixels + start, canvas.bytesPerRow, size - start);
    return canvas;
  }

 private:
  std::uint32_t feature(WebPFormatFeature which) const {
    return WebPDemuxGetI(demuxer_.get(), which);
  }

  /// The payload of the first chunk of this type; empty when there is none.
  ByteView chunk(const char* fourCC) const {
    WebPChunkIterator found{};
    if (!WebPDemuxGetChunk(demuxer_.get(), fourCC, 1, &found)) return {};
    const ChunkContent content(&found);
    return {found.chunk.bytes, found.chunk.size};  // points into the file
  }

  ColorSpacePtr colorSpace() const {
    const ByteView profile = chunk("ICCP");
    ImageLimits::checkICC(profile.size());
    return profile.empty() ? ColorSpace::sRGB()
                           : ColorSpace::fromICC(profile, ColorSpace::Model::rgb);
  }

  Demuxer demuxer_;
};

/// The file begins with "RIFF", its size and "WEBP" (RFC 9649 clause 2.4).
bool recognises(ByteView file) {
  const auto standsAt = [&](std::size_t offset, std::string_view code) {
    return std::ranges::equal(file.subspan(offset, code.size()), code);
  };
  return file.size() >= 12 && standsAt(0, "RIFF") && standsAt(8, "WEBP");
}

}  // namespace

const ImageReader webpReader{recognises, openAs<WebPSource>};

}  // namespace orvane
