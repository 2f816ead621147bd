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

/// Unpacks a zlib stream; absent when it is broken.
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

/// The profile of an iCCP chunk (PNG clause 11.3.2.3): a name, a zero, the compression method (0),
/// a zlib stream.
std::optional<Bytes> embeddedProfile(ByteView iCCP) {
  const auto nameSize = static_cast<std::size_t>(std::ranges::find(iCCP, 0) - iCCP.begin());
  if (nameSize + 2 > iCCP.size() || iCCP[nameSize + 1] != 0) return std::nullopt;
  return inflateProfile(iCCP.subspan(nameSize + 2));
}

/// Whether code points define a space. Of two numbers both must be specified: a guess at the other
/// would hide a later chunk, which defines the whole space. Grey needs the curve only.
bool areUsable(CodePoints codePoints, ColorSpace::Model model) {
  return model == ColorSpace::Model::gray ? decodingCurve(codePoints.transfer) != nullptr
                                          : makeProfile(codePoints) != nullptr;
}

/// The content of a cICP chunk (PNG clause 11.3.2.6): primaries, transfer, matrix (0, as the
/// picture is RGB) and range (1, full).
std::optional<CodePoints> codePointsIn(ByteView cICP, ColorSpace::Model model) {
  if (cICP.size() != 4 || cICP[2] != 0 || cICP[3] != 1) return std::nullopt;
  const CodePoints codePoints{cICP[0], cICP[1]};
  return areUsable(codePoints, model) ? std::optional(codePoints) : std::nullopt;
}

/// The content of a cHRM chunk (PNG clause 11.3.2.1): x and y of the white point, red, green and
/// blue, in units of 1/100 000.
constexpr double chunkUnit = 100'000;
using ChunkChromaticities = std::array<std::uint32_t, 8>;
constexpr ChunkChromaticities sRGBChromaticities{31'270, 32'900, 64'000, 33'000,
                                                 30'000, 60'000, 15'000, 6'000};

/// The chromaticities of a cHRM chunk; sRGB's when there is no chunk or it holds an impossible
/// colour.
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
  constexpr int tolerance = 100;  // many writers round to three decimals
  return std::ranges::equal(values, sRGBChromaticities, [](std::uint32_t a, std::uint32_t b) {
    return std::abs(static_cast<int>(a) - static_cast<int>(b)) <= tolerance;
  });
}

ColorSpacePtr colorSpaceOfGamma(ByteView gAMA, const std::optional<ByteView>& cHRM,
                                ColorSpace::Model model) {
  // PNG clause 11.3.2.2: the encoding exponent in units of 1/100 000.
  const std::uint32_t encoding = gAMA.size() == 4 ? readPNGInteger(gAMA) : 0;
  if (encoding == 0) return ColorSpace::standard(model);
  const ChunkChromaticities values = chromaticitiesIn(cHRM);
  // Writers put 1/2.2, rounded in several ways, for sRGB.
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
    const auto profile = embeddedProfile(*chunks.profile);
    return profile ? ColorSpace::fromICC(*profile, model) : ColorSpace::standard(model);
  }
  if (chunks.standardRGB || !chunks.gamma) return ColorSpace::standard(model);
  return colorSpaceOfGamma(*chunks.gamma, chunks.chromaticities, model);
}

}  // namespace orvane
