#pragma once

#include <lcms2.h>

#include <memory>
#include <string>
#include <type_traits>

#include "platform/foundation/Bytes.h"

namespace orvane {

struct ProfileCloser {
  void operator()(void* profile) const { cmsCloseProfile(profile); }
};
struct TransformDeleter {
  void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
struct ToneCurveDeleter {
  void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};

/// Owners of Little CMS handles. A handle is for one thread at a time.
using ProfileHandle = std::unique_ptr<std::remove_pointer_t<cmsHPROFILE>, ProfileCloser>;
using TransformHandle = std::unique_ptr<std::remove_pointer_t<cmsHTRANSFORM>, TransformDeleter>;
using ToneCurveHandle = std::unique_ptr<cmsToneCurve, ToneCurveDeleter>;

/// ICC profiles (ICC.1:2022) in memory.
namespace ICCProfile {

/// Null when the bytes are no profile.
ProfileHandle open(ByteView profile);

/// Names the profile for the people who see it in a viewer. ASCII.
void describe(const ProfileHandle& profile, const std::string& name);

/// The profile as a file. The same profile gives the same bytes at any time: the creation date,
/// which Little CMS takes from the clock, is a fixed one. Throws std::bad_alloc.
Bytes serialized(const ProfileHandle& profile);

}  // namespace ICCProfile
}  // namespace orvane
