#include "support/WebPBuilder.h"

#include <webp/encode.h>
#include <webp/mux.h>

#include <stdexcept>

#include "platform/foundation/Handle.h"

namespace orvane::test {
namespace {

using Mux = Handle<WebPMux, WebPMuxDelete>;

constexpr int copyData = 1;

void require(bool succeeded) {
  if (!succeeded) throw std::runtime_error("libwebp refuses");
}

WebPData viewOf(ByteView bytes) { return {bytes.data(), bytes.size()}; }

Bytes assemble(const Mux& mux) {
  WebPData data{};
  require(WebPMuxAssemble(mux.get(), &data) == WEBP_MUX_OK);
  Bytes bytes(data.bytes, data.bytes + data.size);
  WebPDataClear(&data);
  return bytes;
}

void writeLittleEndian(Bytes& bytes, std::size_t at, std::size_t value) {
  for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
}

}  // namespace

Bytes encodeWebP(const Image& image, WebPCoding coding) {
  WebPConfig config{};
  require(WebPConfigPreset(&config, WEBP_PRESET_DEFAULT, 90));
  config.lossless = coding == WebPCoding::lossless ? 1 : 0;
  config.exact = 1;
  WebPPicture picture{};
  require(WebPPictureInit(&picture));
  picture.use_argb = 1;
  picture.width = static_cast<int>(image.width);
  picture.height = static_cast<int>(image.height);
  const auto import =
      image.alpha == AlphaKind::none ? WebPPictureImportRGBX : WebPPictureImportRGBA;
  require(import(&picture, image.pixels.get(), static_cast<int>(image.bytesPerRow)));
  WebPMemoryWriter writer{};
  WebPMemoryWriterInit(&writer);
  picture.writer = WebPMemoryWrite;
  picture.custom_ptr = &writer;
  const bool encoded = WebPEncode(&config, &picture) != 0;
  Bytes bytes(writer.mem, writer.mem + writer.size);
  WebPMemoryWriterClear(&writer);
  WebPPictureFree(&picture);
  require(encoded);
  return bytes;
}

Bytes withUnusedAlpha(ByteView webp) {
  constexpr std::size_t dataAt = 20;            // RIFF header, then the header of the only chunk
  constexpr std::uint8_t alphaIsUsed = 1 << 4;  // after signature, width and height: bit 36
  Bytes file(webp.begin(), webp.end());
  require(file.size() > dataAt + 4 && file[15] == 'L' && (file[dataAt + 4] & alphaIsUsed) != 0);
  file[dataAt + 4] &= static_cast<std::uint8_t>(~alphaIsUsed);
  return file;
}

Bytes withMetadata(ByteView webp, const WebPMetadata& metadata) {
  const Mux mux(WebPMuxNew());
  const WebPData still = viewOf(webp);
  require(WebPMuxSetImage(mux.get(), &still, copyData) == WEBP_MUX_OK);
  const auto add = [&](const char* type, const Bytes& payload) {
    const WebPData data = viewOf(payload);
    require(payload.empty() || WebPMuxSetChunk(mux.get(), type, &data, copyData) == WEBP_MUX_OK);
  };
  add("ICCP", metadata.icc);
  add("EXIF", metadata.exif);
  return assemble(mux);
}

Bytes animateWebP(std::size_t width, std::size_t height, const std::vector<WebPFrame>& frames) {
  const Mux mux(WebPMuxNew());
  for (const WebPFrame& frame : frames) {
    WebPMuxFrameInfo info{};
    info.bitstream = viewOf(frame.still);
    info.x_offset = frame.x;
    info.y_offset = frame.y;
    info.duration = 100;
    info.id = WEBP_CHUNK_ANMF;
    require(WebPMuxPushFrame(mux.get(), &info, copyData) == WEBP_MUX_OK);
  }
  const WebPMuxAnimParams parameters{.bgcolor = 0xFF204060, .loop_count = 0};
  require(WebPMuxSetAnimationParams(mux.get(), &parameters) == WEBP_MUX_OK);
  require(WebPMuxSetCanvasSize(mux.get(), static_cast<int>(width), static_cast<int>(height)) ==
          WEBP_MUX_OK);
  return assemble(mux);
}

Bytes withShortenedData(ByteView webp, std::size_t count) {
  constexpr std::size_t fileSizeAt = 4;
  constexpr std::size_t chunkSizeAt = 16;
  constexpr std::size_t dataAt = 20;
  Bytes file(webp.begin(), webp.end());
  const std::size_t size =
      file[chunkSizeAt] | file[chunkSizeAt + 1] << 8 | file[chunkSizeAt + 2] << 16;
  file.resize(dataAt + size - count);
  writeLittleEndian(file, chunkSizeAt, size - count);
  if (file.size() % 2 == 1) file.push_back(0);
  writeLittleEndian(file, fileSizeAt, file.size() - 8);
  return file;
}

}  // namespace orvane::test
