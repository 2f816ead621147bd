#include "support/TestProfiles.h"

#include <array>
#include <cmath>

#include "platform/graphics/ICCProfile.h"

namespace orvane::test {
namespace {

constexpr cmsCIExyY d65{0.3127, 0.3290, 1.0};

ToneCurveHandle sRGBCurve() {
  constexpr std::array<double, 5> parameters{2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
  return ToneCurveHandle(cmsBuildParametricToneCurve(nullptr, 4, parameters.data()));
}

Bytes rgbProfile(const cmsCIExyYTRIPLE& primaries, cmsToneCurve* curve) {
  const std::array<cmsToneCurve*, 3> curves{curve, curve, curve};
  return ICCProfile::serialized(
      ProfileHandle(cmsCreateRGBProfile(&d65, &primaries, curves.data())));
}

const cmsCIExyYTRIPLE adobePrimaries{{0.640, 0.330, 1}, {0.210, 0.710, 1}, {0.150, 0.060, 1}};
const cmsCIExyYTRIPLE p3Primaries{{0.680, 0.320, 1}, {0.265, 0.690, 1}, {0.150, 0.060, 1}};

ToneCurveHandle straightCurve() { return ToneCurveHandle(cmsBuildGamma(nullptr, 1)); }

int inkToLab(const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
  const double black = 1 - in[3] / 65535.0;
  const auto channel = [&](int ink) { return (1 - in[ink] / 65535.0) * black; };
  // Multiplicative inks: good enough to be told from uncalibrated ones.
  const double red = 0.9 * channel(0), green = 0.85 * channel(1), blue = 0.8 * channel(2);
  const cmsCIEXYZ xyz{0.436 * red + 0.385 * green + 0.143 * blue,
                      0.222 * red + 0.717 * green + 0.061 * blue,
                      0.014 * red + 0.097 * green + 0.714 * blue};
  cmsCIELab lab;
  cmsXYZ2Lab(nullptr, &lab, &xyz);
  cmsFloat2LabEncoded(out, &lab);
  return 1;
}

}  // namespace

Bytes displayP3Profile() { return rgbProfile(p3Primaries, sRGBCurve().get()); }

Bytes adobeRGBProfile() {
  return rgbProfile(adobePrimaries, ToneCurveHandle(cmsBuildGamma(nullptr, 563.0 / 256)).get());
}

Bytes grayGamma22Profile() {
  const ToneCurveHandle curve(cmsBuildGamma(nullptr, 2.2));
  return ICCProfile::serialized(ProfileHandle(cmsCreateGrayProfile(&d65, curve.get())));
}

Bytes linearAdobeRGBProfile() { return rgbProfile(adobePrimaries, straightCurve().get()); }

Bytes linearGrayProfile() {
  return ICCProfile::serialized(ProfileHandle(cmsCreateGrayProfile(&d65, straightCurve().get())));
}

Bytes grayLightnessProfile() {
  const ProfileHandle profile(cmsCreateGrayProfile(&d65, straightCurve().get()));
  cmsSetPCS(profile.get(), cmsSigLabData);
  return ICCProfile::serialized(profile);
}

Bytes tabledLinearProfile() {
  const ToneCurveHandle straight = straightCurve();
  const std::array<cmsToneCurve*, 3> curves{straight.get(), straight.get(), straight.get()};
  const ProfileHandle profile(cmsCreateRGBProfile(&d65, &p3Primaries, curves.data()));
  cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 3, 3);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
  cmsWriteTag(profile.get(), cmsSigAToB0Tag, pipeline);
  cmsPipelineFree(pipeline);
  return ICCProfile::serialized(profile);
}

Bytes taggedPQProfile() {
  const ProfileHandle profile = ICCProfile::open(adobeRGBProfile());
  constexpr std::array<std::uint8_t, 12> tag{'c', 'i', 'c', 'p', 0, 0, 0, 0, 9, 16, 0, 1};
  cmsWriteRawTag(profile.get(), cmsSigcicpTag, tag.data(), tag.size());
  return ICCProfile::serialized(profile);
}

Bytes otherMakeSRGBProfile() {
  const cmsCIExyYTRIPLE rec709{{0.640, 0.330, 1}, {0.300, 0.600, 1}, {0.150, 0.060, 1}};
  std::array<cmsUInt16Number, 1024> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double v = static_cast<double>(i) / 1023;
    const double linear = v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    table[i] = static_cast<cmsUInt16Number>(std::lround(linear * 65535));
  }
  const ToneCurveHandle curve(cmsBuildTabulatedToneCurve16(
      nullptr, static_cast<cmsUInt32Number>(table.size()), table.data()));
  return rgbProfile(rec709, curve.get());
}

Bytes cmykProfile() {
  const ProfileHandle profile(cmsCreateProfilePlaceholder(nullptr));
  cmsSetProfileVersion(profile.get(), 4.3);
  cmsSetDeviceClass(profile.get(), cmsSigOutputClass);
  cmsSetColorSpace(profile.get(), cmsSigCmykData);
  cmsSetPCS(profile.get(), cmsSigLabData);
  cmsPipeline* pipeline = cmsPipelineAlloc(nullptr, 4, 3);
  cmsStage* grid = cmsStageAllocCLut16bit(nullptr, 9, 4, 3, nullptr);
  cmsStageSampleCLut16bit(grid, inkToLab, nullptr, 0);
  // ICC.1:2022 10.12: curves stand before and after a grid.
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 4, nullptr));
  cmsPipelineInsertStage(pipeline, cmsAT_END, grid);
  cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
  cmsWriteTag(profile.get(), cmsSigAToB0Tag, pipeline);
  cmsWriteTag(profile.get(), cmsSigAToB1Tag, pipeline);
  cmsPipelineFree(pipeline);
  return ICCProfile::serialized(profile);
}

ColorSpacePtr spaceOfLongProfile(std::uint32_t size) {
  Bytes profile = displayP3Profile();
  profile.resize(size);
  for (int i = 0; i < 4; ++i) {
    profile[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(size >> (24 - 8 * i));
  }
  return ColorSpace::fromICC(profile, ColorSpace::Model::rgb);
}

}  // namespace orvane::test
