#pragma once

#include <lcms2.h>

#include <string>
#include <type_traits>

#include "platform/foundation/Bytes.h"
#include "platform/foundation/Handle.h"

namespace orvane {

/// Owners of Little CMS handles. A handle is for one thread at a time.
using ProfileHandle = Handle<std::remove_pointer_t<cmsHPROFILE>, cmsCloseProfile>;
using TransformHandle = Handle<std::remove_pointer_t<cmsHTRANSFORM>, cmsDeleteTransform>;
using ToneCurveHandle = Handle<cmsToneCurve, cmsFreeToneCurve>;

/// ICC profiles (ICC.1:2022) in memory.
namespace ICCProfile {

/// Null when the bytes are no profile.
ProfileHandle open(ByteView profile);

/// Whether a profile is for grey pictures, by its header (7.2.6).
bool isForGray(ByteView profile);

/// Whether a grey profile, or an RGB profile of a matrix and curves, gives light in proportion to
/// the coded value.
bool isLinear(const ProfileHandle& profile);

/// An RGB profile with the matrix of `matrix`, which has one, and with this curve for all channels.
/// Throws std::bad_alloc.
ProfileHandle withCurve(const ProfileHandle& matrix, const ToneCurveHandle& curve);

/// Gives the profile the name that viewers show. ASCII.
void describe(const ProfileHandle& profile, const std::string& name);

/// The profile as a file. The same profile gives the same bytes at any time: the creation date,
/// which Little CMS takes from the clock, is a fixed one. Throws std::bad_alloc.
Bytes serialized(const ProfileHandle& profile);

}  // namespace ICCProfile
}  // namespace orvane
