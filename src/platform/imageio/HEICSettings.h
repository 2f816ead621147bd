#pragma once

namespace orvane::HEICSettings {

/// x265's constant rate factor, with the tuning of `hevcEncoder`, that gives photographs the look
/// which `quality` 0…1 means in every format. Falls as quality rises. Qualities outside 0…1 count
/// as the nearest.
double rateFactor(double quality);

}  // namespace orvane::HEICSettings
