#include "codecs/png/PNGColorSpace.h"

#include <zlib.h>

#include <algorithm>
#include <cstdlib>

#include "codecs/ImageLimits.h"
#include "platform/foundation/Handle.h"
#include "platform/graphics/CodePointsProfile.h"

namespace orvane {
namespace {

using InflateState = Handle<z_stream, inflateEnd>;

/// What a zlib stream holds, or nothing when it is broken.
std::optional<Bytes> inflateProfile(ByteView stream) {
  z_stream zlib{};
  zlib.next_in = const_cast<Bytef*>(stream.data());
  zlib.avail_in = static_cast<uInt>(stream.size());  // a chunk has less than 2³¹ bytes
  if (inflateInit(&zlib) != Z_OK) throw std::bad_alloc();
  const InflateState state(&zlib);
  constexpr std::size_t step = std::size_t{64} << 10;
  Bytes profile;
  int status = Z_OK;
  do {
    profile.resize(profile.size() + step);
    zlib.next_out = profile.data() + profile.size() - step;
    zlib.avail_out = step;
    status = inflate(&zlib, Z_NO_FLUSH);
    if (status != Z_OK && status != Z_STREAM_END) return std::nullopt;
    ImageLimits::checkICC(zlib.total_out);
  } while (status != Z_STREAM_END);
  profile.resize(profile.size() - zlib.avail_out);
  return profile;
}

/// PNG clause 11.3.2.3: a name, a zero, the compression method (0), a zlib stream.
std::optional<Bytes> embeddedProfile(ByteView iCCP) {
  const auto nameSize = static_cast<std::size_t>(std::ranges::find(iCCP, 0) - iCCP.begin());
  if (nameSize + 2 > iCCP.size() || iCCP[nameSize + 1] != 0) return std::nullopt;
  return inflateProfile(iCCP.subspan(nameSize + 2));
}

/// Whether code points name a whole space. One unspecified number of the two is no more use than
/// both: the chunks that follow cICP say the whole, where the missing half would be a guess. Grey
/// has no primaries and needs only the curve.
bool areUsable(CodePoints codePoints, ColorSpace::Model model) {
  return model == ColorSpace::Model::gray ? decodingCurve(codePoints.transfer) != nullptr
                                          : makeProfile(codePoints) != nullptr;
}

/// PNG clause 11.3.2.6: primaries, transfer, matrix (0, as the picture is RGB) and full range.
std::optional<CodePoints> codePointsIn(ByteView cICP, ColorSpace::Model model) {
  if (cICP.size() != 4 || cICP[2] != 0 || cICP[3] != 1) return std::nullopt;
  const CodePoints codePoints{cICP[0], cICP[1]};
  return areUsable(codePoints, model) ? std::optional(codePoints) : std::nullopt;
}

/// What cHRM holds (PNG clause 11.3.2.1), in its units: x and y of the white point, red, green and
/// blue, times 100 000.
constexpr double chunkUnit = 100'000;
using ChunkChromaticities = std::array<std::uint32_t, 8>;
constexpr ChunkChromaticities sRGBChromaticities{31'270, 32'900, 64'000, 33'000,
                                                 30'000, 60'000, 15'000, 6'000};

/// Those of a cHRM chunk, or sRGB's when there is none or it says what no colour can be.
ChunkChromaticities chromaticitiesIn(const std::optional<ByteView>& cHRM) {
  ChunkChromaticities values{};
  if (!cHRM || cHRM->size() != values.size() * 4) return sRGBChromaticities;
  for (std::size_t i = 0; i < values.size(); ++i) values[i] = readPNGInteger(cHRM->subspan(i * 4));
  for (std::size_t x = 0; x < values.size(); x += 2) {
    const double y = values[x + 1];
    if (y == 0 || values[x] + y > chunkUnit) return sRGBChromaticities;
  }
  return values;
}

bool areSRGB(const ChunkChromaticities& values) {
  constexpr int tolerance = 100;  // three decimals are what many writers know of
  return std::ranges::equal(values, sRGBChromaticities, [](std::uint32_t a, std::uint32_t b) {
    return std::abs(static_cast<int>(a) - static_cast<int>(b)) <= tolerance;
  });
}

ColorSpacePtr colorSpaceOfGamma(ByteView gAMA, const std::optional<ByteView>& cHRM,
                                ColorSpace::Model model) {
  // PNG clause 11.3.2.2: the encoding exponent, times 100 000.
  const std::uint32_t encoding = gAMA.size() == 4 ? readPNGInteger(gAMA) : 0;
  if (encoding == 0) return ColorSpace::standard(model);
  const ChunkChromaticities values = chromaticitiesIn(cHRM);
  // 1/2.2, in any rounding, is what writers put there for sRGB.
  if (encoding >= 45'445 && encoding <= 45'465 && areSRGB(values)) {
    return ColorSpace::standard(model);
  }
  const auto point = [&](std::size_t at) {
    return Chromaticities::Point{values[at] / chunkUnit, values[at + 1] / chunkUnit};
  };
  return ColorSpace::fromChromaticities({.red = point(2),
                                         .green = point(4),
                                         .blue = point(6),
                                         .white = point(0),
                                         .gamma = chunkUnit / encoding},
                                        model);
}

}  // namespace

ColorSpacePtr pngColorSpace(const PNGChunks& chunks, ColorSpace::Model model) {
  if (chunks.codePoints) {
    if (const auto codePoints = codePointsIn(*chunks.codePoints, model)) {
      return ColorSpace::fromCodePoints(*codePoints, model);
    }
  }
  if (chunks.profile) {
    if (const auto profile = embeddedProfile(*chunks.profile)) {
      return ColorSpace::fromICC(*profile, model);
    }
  }
  if (chunks.standardRGB || !chunks.gamma) return ColorSpace::standard(model);
  return colorSpaceOfGamma(*chunks.gamma, chunks.chromaticities, model);
}

}  // namespace orvane
