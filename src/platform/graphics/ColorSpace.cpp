#include "platform/graphics/ColorSpace.h"

#include "platform/graphics/ICCProfile.h"

namespace orvane {
namespace {

/// What the profile describes must be what the picture holds.
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

bool convertsBothWays(const ProfileHandle& profile) {
  return cmsIsIntentSupported(profile.get(), INTENT_RELATIVE_COLORIMETRIC, LCMS_USED_AS_INPUT) &&
         cmsIsIntentSupported(profile.get(), INTENT_RELATIVE_COLORIMETRIC, LCMS_USED_AS_OUTPUT);
}

}  // namespace

ColorSpace::ColorSpace(Model model, std::optional<std::string_view> name, Bytes iccData,
                       std::optional<CodePoints> codePoints)
    : model_(model), name_(name), iccData_(std::move(iccData)), codePoints_(codePoints) {
  if (model_ != Model::rgb) return;
  const ProfileHandle profile = ICCProfile::open(iccData_);
  supportsOutput_ = profile && convertsBothWays(profile);
}

ColorSpacePtr ColorSpace::standard(Model model) {
  static const ColorSpacePtr rgb = std::make_shared<ColorSpace>(
      Model::rgb, sRGBName, ICCProfile::serialized(ProfileHandle(cmsCreate_sRGBProfile())),
      sRGBCodePoints);
  static const ColorSpacePtr gray =
      std::make_shared<ColorSpace>(Model::gray, std::nullopt, Bytes{}, sRGBCodePoints);
  static const ColorSpacePtr cmyk =
      std::make_shared<ColorSpace>(Model::cmyk, std::nullopt, Bytes{}, std::nullopt);
  return model == Model::rgb ? rgb : model == Model::gray ? gray : cmyk;
}

ColorSpacePtr ColorSpace::fromICC(ByteView profile, Model model) {
  const ProfileHandle handle = ICCProfile::open(profile);
  if (!handle || modelOf(handle) != model) return standard(model);
  return std::make_shared<ColorSpace>(model, std::nullopt, Bytes(profile.begin(), profile.end()),
                                      std::nullopt);
}

ColorSpacePtr ColorSpace::fromCodePoints(CodePoints, Model model) { return standard(model); }

ColorSpacePtr ColorSpace::fromChromaticities(const Chromaticities&, Model model) {
  return standard(model);
}

ColorSpacePtr renderingSpace(const ColorSpacePtr& own) {
  return own->supportsOutput() ? own : ColorSpace::sRGB();
}

}  // namespace orvane
