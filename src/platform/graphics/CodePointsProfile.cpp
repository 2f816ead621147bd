#include "platform/graphics/CodePointsProfile.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace orvane {
namespace {

struct PrimariesRow {
  std::uint16_t code;
  cmsCIExyY white;
  cmsCIExyYTRIPLE primaries;
};

constexpr cmsCIExyY d65{0.3127, 0.3290, 1};
constexpr cmsCIExyY illuminantC{0.310, 0.316, 1};
constexpr cmsCIExyY dciWhite{0.314, 0.351, 1};

/// ITU-T H.273 table 2.
constexpr std::array<PrimariesRow, 10> primariesTable{{
    {1, d65, {{0.640, 0.330, 1}, {0.300, 0.600, 1}, {0.150, 0.060, 1}}},
    {4, illuminantC, {{0.67, 0.33, 1}, {0.21, 0.71, 1}, {0.14, 0.08, 1}}},
    {5, d65, {{0.64, 0.33, 1}, {0.29, 0.60, 1}, {0.15, 0.06, 1}}},
    {6, d65, {{0.630, 0.340, 1}, {0.310, 0.595, 1}, {0.155, 0.070, 1}}},
    {7, d65, {{0.630, 0.340, 1}, {0.310, 0.595, 1}, {0.155, 0.070, 1}}},
    {8, illuminantC, {{0.681, 0.319, 1}, {0.243, 0.692, 1}, {0.145, 0.049, 1}}},
    {9, d65, {{0.708, 0.292, 1}, {0.170, 0.797, 1}, {0.131, 0.046, 1}}},
    {11, dciWhite, {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}}},
    {12, d65, {{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}}},
    {22, d65, {{0.630, 0.340, 1}, {0.295, 0.605, 1}, {0.155, 0.077, 1}}},
}};

/// The curve light = ((value + a − 1) / a) ^ gamma from `start` on and value / slope below it: type
/// 3 of ICC's parametric curves.
ToneCurveHandle offsetGamma(double gamma, double a, double slope, double start) {
  const std::array<double, 5> parameters{gamma, 1 / a, (a - 1) / a, 1 / slope, start};
  return ToneCurveHandle(cmsBuildParametricToneCurve(nullptr, 4, parameters.data()));
}

ToneCurveHandle gamma(double exponent) { return ToneCurveHandle(cmsBuildGamma(nullptr, exponent)); }

ToneCurveHandle table(double (*linear)(double)) {
  std::vector<cmsUInt16Number> values(4096);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const double value = linear(static_cast<double>(i) / static_cast<double>(values.size() - 1));
    values[i] = static_cast<cmsUInt16Number>(std::lround(std::clamp(value, 0.0, 1.0) * 65535));
  }
  return ToneCurveHandle(cmsBuildTabulatedToneCurve16(
      nullptr, static_cast<cmsUInt32Number>(values.size()), values.data()));
}

/// Light of SMPTE ST 2084, where 1 is the reference white of 203 cd/m² (ITU-R BT.2408). With 1 at
/// the peak of 10 000 cd/m², viewers that know curves alone would show pictures nearly black.
double perceptualQuantizer(double value) {
  constexpr double peak = 10'000.0 / 203;
  constexpr double m1 = 2610.0 / 16384, m2 = 2523.0 / 4096 * 128;
  constexpr double c1 = 3424.0 / 4096, c2 = 2413.0 / 4096 * 32, c3 = 2392.0 / 4096 * 32;
  const double power = std::pow(value, 1 / m2);
  return peak * std::pow(std::max(power - c1, 0.0) / (c2 - c3 * power), 1 / m1);
}

/// The inverse of the hybrid log-gamma OETF (ITU-R BT.2100): scene light, where 1 is the peak.
double sceneLight(double value) {
  constexpr double a = 0.17883277, b = 1 - 4 * a;
  const double c = 0.5 - a * std::log(4 * a);
  return value <= 0.5 ? value * value / 3 : (std::exp((value - c) / a) + b) / 12;
}

/// Light of a display of 1000 cd/m², where 1 is the reference white: 75 % of the signal (ITU-R
/// BT.2408). The display's system gamma of 1.2 (ITU-R BT.2100) belongs to luminance; a curve can
/// apply it to each channel only.
double hybridLogGamma(double value) { return std::pow(sceneLight(value) / sceneLight(0.75), 1.2); }

double logarithmic100(double value) { return value <= 0 ? 0 : std::pow(10, 2 * (value - 1)); }

double logarithmic316(double value) { return value <= 0 ? 0 : std::pow(10, 2.5 * (value - 1)); }

/// ICC.1:2022 10.3: the type, four zeros, primaries, transfer, matrix (0, RGB) and range (1, full).
/// Little CMS 2.14 puts four more bytes before the code points when it writes the tag, and expects
/// them when it reads one.
using CodePointsTag = std::array<std::uint8_t, 12>;

CodePointsTag codePointsTag(CodePoints codePoints) {
  return {'c',
          'i',
          'c',
          'p',
          0,
          0,
          0,
          0,
          static_cast<std::uint8_t>(codePoints.primaries),
          static_cast<std::uint8_t>(codePoints.transfer),
          0,
          1};
}

}  // namespace

ToneCurveHandle decodingCurve(std::uint16_t transfer) {
  switch (transfer) {  // ITU-T H.273 table 3
    case 1:
    case 6:
    case 11:
    case 12:
    case 14:
    case 15:
      return offsetGamma(1 / 0.45, 1.09929682680944, 4.5, 4.5 * 0.018053968510807);
    case 4:
      return gamma(2.2);
    case 5:
      return gamma(2.8);
    case 7:
      return offsetGamma(1 / 0.45, 1.1115, 4.0, 4.0 * 0.0228);
    case 8:
      return gamma(1);
    case 9:
      return table(logarithmic100);
    case 10:
      return table(logarithmic316);
    case 13:
      return offsetGamma(2.4, 1.055, 12.92, 0.04045);
    case 16:
      return table(perceptualQuantizer);
    case 17:
      return gamma(2.6);
    case 18:
      return table(hybridLogGamma);
    default:
      return nullptr;
  }
}

std::optional<CodePoints> taggedCodePoints(const ProfileHandle& profile) {
  CodePointsTag tag{};
  const cmsUInt32Number size = cmsReadRawTag(profile.get(), cmsSigcicpTag, nullptr, 0);
  if (size != tag.size() ||
      cmsReadRawTag(profile.get(), cmsSigcicpTag, tag.data(), size) != tag.size()) {
    return std::nullopt;
  }
  const CodePoints codePoints{tag[8], tag[9]};
  return tag == codePointsTag(codePoints) ? std::optional(codePoints) : std::nullopt;
}

ProfileHandle makeProfile(CodePoints codePoints) {
  const auto row = std::ranges::find(primariesTable, codePoints.primaries, &PrimariesRow::code);
  const ToneCurveHandle curve = decodingCurve(codePoints.transfer);
  if (row == primariesTable.end() || !curve) return nullptr;
  const std::array<cmsToneCurve*, 3> curves{curve.get(), curve.get(), curve.get()};
  ProfileHandle profile(cmsCreateRGBProfile(&row->white, &row->primaries, curves.data()));
  if (!profile) return nullptr;
  const std::string name = "ITU-T H.273 " + std::to_string(codePoints.primaries) + "/" +
                           std::to_string(codePoints.transfer);
  ICCProfile::describe(profile, name);
  // The cicp tag (ICC.1:2022 9.2.17) tells readers the whole range of PQ and HLG.
  const CodePointsTag tag = codePointsTag(codePoints);
  cmsWriteRawTag(profile.get(), cmsSigcicpTag, tag.data(), tag.size());
  return profile;
}

}  // namespace orvane
