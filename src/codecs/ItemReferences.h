#pragma once

#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/foundation/Bytes.h"

namespace orvane {

/// The references between image items that decoders follow (ISO/IEC 14496-12, 8.11.12; ISO/IEC
/// 23008-12, 6.6 and 6.4): from a derived item to its sources (dimg), from an item to its auxiliary
/// ones (auxl) and to its thumbnails (thmb).
class ItemReferences {
 public:
  using Areas = std::unordered_map<std::uint32_t, std::uint64_t>;
  using Items = std::unordered_set<std::uint32_t>;

  /// Levels of references below an item. A grid of identity derivations with alpha takes three.
  static constexpr int maximumLevels = 8;

  /// `iref` is the content of the item reference box. Throws UnreadableImage when it holds more
  /// references than the tiles of a file can need.
  explicit ItemReferences(ByteView iref);

  /// Throws UnreadableImage when an item refers to itself, straight or through others, or through
  /// more than `maximumLevels`, and when decoding `primary` with all that it refers to would cost
  /// more than a picture of its size can need or ask for an item in `undecodable`. `areas`: the
  /// pixels of each item, as far as known.
  void check(std::uint32_t primary, const Areas& areas, const Items& undecodable = {}) const;

 private:
  struct Reference {
    std::uint32_t from, to;
    friend auto operator<=>(const Reference&, const Reference&) = default;
  };
  class Survey;

  std::vector<Reference> references_;  ///< sorted
};

}  // namespace orvane
