#include "platform/graphics/ColorSpace.h"

#include <cstdlib>
#include <vector>

#include "platform/graphics/CodePointsProfile.h"
#include "platform/graphics/ICCProfile.h"

namespace orvane {
namespace {

constexpr std::uint16_t rec709Primaries = sRGBCodePoints.primaries;
constexpr std::uint16_t sRGBTransfer = sRGBCodePoints.transfer;

/// The model of the pictures that the profile is for.
std::optional<ColorSpace::Model> modelOf(const ProfileHandle& profile) {
  switch (cmsGetColorSpace(profile.get())) {
    case cmsSigGrayData:
      return ColorSpace::Model::gray;
    case cmsSigRgbData:
      return ColorSpace::Model::rgb;
    case cmsSigCmykData:
      return ColorSpace::Model::cmyk;
    default:
      return std::nullopt;
  }
}

/// Whether the profile also converts from the connection space, by a matrix and curves or by a BToA
/// table (ICC.1:2022 clause 8).
bool canBeRenderedInto(const ProfileHandle& profile) {
  return cmsIsMatrixShaper(profile.get()) || cmsIsTag(profile.get(), cmsSigBToA0Tag) ||
         cmsIsTag(profile.get(), cmsSigBToA1Tag) || cmsIsTag(profile.get(), cmsSigBToD1Tag);
}

/// 8-bit colours that tell profiles apart: every grey and a lattice of 6 × 6 × 6 colours.
std::vector<std::uint8_t> probes(ColorSpace::Model model) {
  std::vector<std::uint8_t> values;
  for (int v = 0; v < 256; ++v) {
    values.insert(values.end(), model == ColorSpace::Model::gray ? 1 : 3,
                  static_cast<std::uint8_t>(v));
  }
  if (model == ColorSpace::Model::gray) return values;
  for (int i = 0; i < 6 * 6 * 6; ++i) {
    for (const int v : {i / 36, i / 6 % 6, i % 6})
      values.push_back(static_cast<std::uint8_t>(v * 51));
  }
  return values;
}

enum class Comparison { same, different, impossible };

/// Whether a number of a picture of `model` means the same colour in `profile` and in `other`, an
/// RGB profile, within the rounding of 8 bits.
Comparison compare(const ProfileHandle& profile, ColorSpace::Model model,
                   const ProfileHandle& other) {
  const bool isGray = model == ColorSpace::Model::gray;
  const TransformHandle transform(
      cmsCreateTransform(profile.get(),
                         isGray                            ? TYPE_GRAY_8
                         : model == ColorSpace::Model::rgb ? TYPE_RGB_8
                                                           : TYPE_CMYK_8,
                         other.get(), TYPE_RGB_8, INTENT_RELATIVE_COLORIMETRIC,
                         cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE));
  if (!transform) return Comparison::impossible;
  if (model == ColorSpace::Model::cmyk) return Comparison::different;
  const std::vector<std::uint8_t> in = probes(model);
  const std::size_t pixels = isGray ? in.size() : in.size() / 3;
  std::vector<std::uint8_t> out(pixels * 3);
  cmsDoTransform(transform.get(), in.data(), out.data(), static_cast<cmsUInt32Number>(pixels));
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (std::abs(int{out[i]} - int{in[isGray ? i / 3 : i]}) > 1) return Comparison::different;
  }
  return Comparison::same;
}

/// The code points whose equivalent profile gives the same colours as `profile`.
std::optional<CodePoints> recognised(const ProfileHandle& profile) {
  // Curves alone cannot tell PQ and HLG: they end at the reference white.
  const auto tagged = taggedCodePoints(profile);
  if (tagged && hasHighDynamicRange(*tagged) && makeProfile(*tagged)) return tagged;
  // The curves of still pictures: sRGB's, then BT.709's, plain gammas and linear light.
  constexpr CodePoints candidates[]{{12, 13}, {9, 13}, {1, 1},  {12, 1}, {9, 1},   {1, 4},  {12, 4},
                                    {9, 4},   {1, 8},  {12, 8}, {9, 8},  {11, 13}, {11, 17}};
  for (const CodePoints candidate : candidates) {
    if (compare(profile, ColorSpace::Model::rgb, makeProfile(candidate)) == Comparison::same) {
      return candidate;
    }
  }
  return std::nullopt;
}

}  // namespace

ColorSpace::ColorSpace(Model model, std::optional<std::string_view> name, Bytes iccData,
                       std::optional<CodePoints> codePoints)
    : model_(model), name_(name), iccData_(std::move(iccData)), codePoints_(codePoints) {
  if (model_ != Model::rgb) return;
  const ProfileHandle profile = ICCProfile::open(iccData_);
  supportsOutput_ = profile && canBeRenderedInto(profile);
}

ColorSpacePtr ColorSpace::standard(Model model) {
  static const ColorSpacePtr rgb = std::make_shared<ColorSpace>(
      Model::rgb, sRGBName, ICCProfile::serialized(makeProfile(sRGBCodePoints)), sRGBCodePoints);
  static const ColorSpacePtr gray =
      std::make_shared<ColorSpace>(Model::gray, std::nullopt, Bytes{}, sRGBCodePoints);
  static const ColorSpacePtr cmyk =
      std::make_shared<ColorSpace>(Model::cmyk, std::nullopt, Bytes{}, std::nullopt);
  return model == Model::rgb ? rgb : model == Model::gray ? gray : cmyk;
}

ColorSpacePtr ColorSpace::fromICC(ByteView profile, Model model) {
  const ProfileHandle handle = ICCProfile::open(profile);
  if (!handle || modelOf(handle) != model) return standard(model);
  const ProfileHandle sRGBProfile = ICCProfile::open(sRGB()->iccData());
  if (compare(handle, model, sRGBProfile) != Comparison::different) return standard(model);
  return std::make_shared<ColorSpace>(model, std::nullopt, Bytes(profile.begin(), profile.end()),
                                      std::nullopt);
}

ColorSpacePtr ColorSpace::fromCodePoints(CodePoints codePoints, Model model) {
  constexpr std::uint16_t unspecified = 2;
  if (codePoints.primaries == unspecified) codePoints.primaries = rec709Primaries;
  if (codePoints.transfer == unspecified) codePoints.transfer = sRGBTransfer;
  if (model == Model::gray) {
    const ToneCurveHandle curve = decodingCurve(codePoints.transfer);
    if (!curve || codePoints.transfer == sRGBTransfer) return standard(model);
    const ProfileHandle profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()));
    return std::make_shared<ColorSpace>(model, std::nullopt, ICCProfile::serialized(profile),
                                        codePoints);
  }
  const ProfileHandle profile = makeProfile(codePoints);
  if (!profile || codePoints == sRGBCodePoints) return standard(model);
  return std::make_shared<ColorSpace>(model, std::nullopt, ICCProfile::serialized(profile),
                                      codePoints);
}

ColorSpacePtr ColorSpace::fromChromaticities(const Chromaticities& chromaticities, Model model) {
  if (!(chromaticities.gamma >= 0.1 && chromaticities.gamma <= 10)) return standard(model);
  const ToneCurveHandle curve(cmsBuildGamma(nullptr, chromaticities.gamma));
  const auto point = [](Chromaticities::Point xy) { return cmsCIExyY{xy.x, xy.y, 1}; };
  const cmsCIExyY white = point(chromaticities.white);
  const cmsCIExyYTRIPLE primaries{point(chromaticities.red), point(chromaticities.green),
                                  point(chromaticities.blue)};
  const std::array<cmsToneCurve*, 3> curves{curve.get(), curve.get(), curve.get()};
  const ProfileHandle profile(model == Model::gray
                                  ? cmsCreateGrayProfile(cmsD50_xyY(), curve.get())
                                  : cmsCreateRGBProfile(&white, &primaries, curves.data()));
  if (!profile) return standard(model);
  ICCProfile::describe(profile, "gamma " + std::to_string(chromaticities.gamma).substr(0, 4));
  return fromICC(ICCProfile::serialized(profile), model);
}

std::optional<CodePoints> ColorSpace::codePoints() const {
  if (codePoints_ || model_ != Model::rgb) return codePoints_;
  return recognised(ICCProfile::open(iccData_));
}

bool ColorSpace::isLinear() const {
  if (isSRGB() || model_ == Model::cmyk) return false;
  const ProfileHandle profile = ICCProfile::open(iccData_);
  return profile && ICCProfile::isLinear(profile);
}

ColorSpacePtr ColorSpace::withSRGBCurve() const {
  if (model_ == Model::gray) return sRGB();
  if (codePoints_) return fromCodePoints({codePoints_->primaries, sRGBTransfer}, model_);
  const ProfileHandle profile = ICCProfile::open(iccData_);
  const ToneCurveHandle curve = decodingCurve(sRGBTransfer);
  const ProfileHandle encoded = ICCProfile::withCurve(profile, curve);
  ICCProfile::describe(encoded, "sRGB curve on other primaries");
  return fromICC(ICCProfile::serialized(encoded), model_);
}

ColorSpacePtr renderingSpace(const ColorSpacePtr& own) {
  return own->supportsOutput() ? own : ColorSpace::sRGB();
}

}  // namespace orvane
