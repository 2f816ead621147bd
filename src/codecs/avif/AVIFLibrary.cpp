#include "codecs/avif/AVIFLibrary.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace orvane::AVIFLibrary {

Version aomVersionIn(std::string_view codecs) {
  constexpr std::string_view name = "aom [";
  constexpr std::string_view digits = "0123456789";
  const std::size_t begin = std::min(codecs.find(name), codecs.size());
  const std::size_t colon = std::min(codecs.find(':', begin), codecs.size());
  const std::size_t number = std::min(codecs.find_first_of(digits, colon), codecs.size());
  const char* const end = codecs.data() + codecs.size();
  Version version;
  const auto major = std::from_chars(codecs.data() + number, end, version.major);
  if (major.ptr != end) std::from_chars(major.ptr + 1, end, version.minor);
  return version;
}

Version aomVersion() {
  std::array<char, 256> codecs;
  avifCodecVersions(codecs.data());
  return aomVersionIn(codecs.data());
}

Decoder makeDecoder() { return owned<Decoder>(avifDecoderCreate()); }

Encoder makeEncoder() { return owned<Encoder>(avifEncoderCreate()); }

Picture makePicture(std::uint32_t width, std::uint32_t height, std::uint32_t depth,
                    avifPixelFormat format) {
  return owned<Picture>(avifImageCreate(width, height, depth, format));
}

#if AVIF_VERSION_MAJOR >= 1

namespace {

/// For calls that fail only when they get no memory.
void requireMemory(avifResult result) {
  if (result != AVIF_RESULT_OK) throw std::bad_alloc();
}

/// The quality, 0…100, that libavif turns into this quantizer.
int qualityOf(int quantizer) { return 100 - (quantizer * 100 + 31) / 63; }

}  // namespace

int mirrorAxis(const avifImage& picture) { return picture.imir.axis; }

void setICCProfile(avifImage& picture, ByteView profile) {
  requireMemory(avifImageSetProfileICC(&picture, profile.data(), profile.size()));
}

void setQuantizers(avifEncoder& encoder, Quantizers quantizers) {
  encoder.quality = qualityOf(quantizers.color);
  encoder.qualityAlpha = qualityOf(quantizers.alpha);
}

void setCodecOption(avifEncoder& encoder, const char* name, const char* value) {
  requireMemory(avifEncoderSetCodecSpecificOption(&encoder, name, value));
}

#else

int mirrorAxis(const avifImage& picture) { return picture.imir.mode; }

void setICCProfile(avifImage& picture, ByteView profile) {
  avifImageSetProfileICC(&picture, profile.data(), profile.size());
}

void setQuantizers(avifEncoder& encoder, Quantizers quantizers) {
  encoder.minQuantizer = encoder.maxQuantizer = quantizers.color;
  encoder.minQuantizerAlpha = encoder.maxQuantizerAlpha = quantizers.alpha;
}

void setCodecOption(avifEncoder& encoder, const char* name, const char* value) {
  avifEncoderSetCodecSpecificOption(&encoder, name, value);
}

#endif

}  // namespace orvane::AVIFLibrary
