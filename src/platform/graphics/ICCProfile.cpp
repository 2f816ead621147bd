#include "platform/graphics/ICCProfile.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>

namespace orvane::ICCProfile {

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
