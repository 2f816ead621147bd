#include "platform/graphics/ICCProfile.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>

namespace orvane::ICCProfile {
namespace {

constexpr std::array curveTags{cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};

}  // namespace

ProfileHandle open(ByteView profile) {
  return ProfileHandle(
      cmsOpenProfileFromMem(profile.data(), static_cast<cmsUInt32Number>(profile.size())));
}

bool isForGray(ByteView profile) {
  constexpr std::string_view gray = "GRAY";
  constexpr std::size_t dataColorSpace = 16;  // a byte's number
  return profile.size() >= dataColorSpace + gray.size() &&
         std::ranges::equal(profile.subspan(dataColorSpace, gray.size()), gray);
}

bool isLinear(const ProfileHandle& profile) {
  // Readers prefer tables to curves. Grey curves of a Lab profile give lightness and not light.
  const bool isGray = cmsGetColorSpace(profile.get()) == cmsSigGrayData;
  if (cmsIsTag(profile.get(), cmsSigAToB0Tag) || cmsIsTag(profile.get(), cmsSigAToB1Tag) ||
      (isGray && cmsGetPCS(profile.get()) != cmsSigXYZData)) {
    return false;
  }
  const auto isStraight = [&](cmsTagSignature tag) {
    const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile.get(), tag));
    return curve != nullptr && cmsIsToneCurveLinear(curve);
  };
  if (isGray) return isStraight(cmsSigGrayTRCTag);
  return cmsIsMatrixShaper(profile.get()) && std::ranges::all_of(curveTags, isStraight);
}

ProfileHandle withCurve(const ProfileHandle& matrix, const ToneCurveHandle& curve) {
  ProfileHandle profile = owned<ProfileHandle>(cmsCreateProfilePlaceholder(nullptr));
  cmsSetProfileVersion(profile.get(), 4.3);
  cmsSetDeviceClass(profile.get(), cmsSigDisplayClass);
  cmsSetColorSpace(profile.get(), cmsSigRgbData);
  cmsSetPCS(profile.get(), cmsSigXYZData);
  cmsWriteTag(profile.get(), cmsSigMediaWhitePointTag, cmsD50_XYZ());
  for (const cmsTagSignature tag :
       {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag,
        cmsSigChromaticAdaptationTag, cmsSigCopyrightTag}) {
    if (const void* value = cmsReadTag(matrix.get(), tag)) cmsWriteTag(profile.get(), tag, value);
  }
  for (const cmsTagSignature tag : curveTags) cmsWriteTag(profile.get(), tag, curve.get());
  return profile;
}

void describe(const ProfileHandle& profile, const std::string& name) {
  cmsMLU* text = cmsMLUalloc(nullptr, 1);
  cmsMLUsetASCII(text, "en", "US", name.c_str());
  cmsWriteTag(profile.get(), cmsSigProfileDescriptionTag, text);
  cmsMLUfree(text);
}

Bytes serialized(const ProfileHandle& profile) {
  cmsUInt32Number size = 0;
  if (!profile || !cmsSaveProfileToMem(profile.get(), nullptr, &size)) throw std::bad_alloc();
  Bytes bytes(size);
  if (!cmsSaveProfileToMem(profile.get(), bytes.data(), &size)) throw std::bad_alloc();
  // ICC.1:2022 7.2.8, dateTimeNumber at byte 24: 2000-01-01 00:00:00.
  constexpr std::array<std::uint8_t, 12> date{0x07, 0xD0, 0, 1, 0, 1, 0, 0, 0, 0, 0, 0};
  std::ranges::copy(date, bytes.begin() + 24);
  return bytes;
}

}  // namespace orvane::ICCProfile
