#include "codecs/ItemReferences.h"

#include <algorithm>

#include "codecs/ISOBaseMedia.h"
#include "codecs/UnreadableImage.h"

namespace orvane {
namespace {

using ISOBaseMedia::Cursor;

/// Eight for each of the 256 × 256 tiles that a grid can have (ISO/IEC 23008-12, 6.6.2.3.2).
constexpr std::size_t maximumReferences = std::size_t{8} * 65536;

/// The pixels that one decoding costs at the least: those of the smallest tile that ISO/IEC
/// 23000-22, 7.3.11.4.2 allows.
constexpr std::uint64_t smallestCost = std::uint64_t{64} * 64;

/// Pixels that every picture may cost: a small picture may be cut out of one large tile.
constexpr std::uint64_t freeCost = std::uint64_t{1} << 26;

/// Pixels that a picture may cost for each of its own. The tiles of a grid can be nearly four times
/// as large as what is shown of them; alpha and other auxiliary pictures (depth, gain maps) cost as
/// much again.
constexpr std::uint64_t costPerPixel = 16;

/// Costs and areas are counted up to here, so that no sum or product overflows.
constexpr std::uint64_t greatestCost = std::uint64_t{1} << 58;

}  // namespace

ItemReferences::ItemReferences(ByteView iref) {
  Cursor boxes(iref);
  const auto size = ISOBaseMedia::identifierSize(takeFullBoxHeader(boxes).version, 1);
  while (!boxes.atEnd()) {
    const ISOBaseMedia::Box box = takeBox(boxes);
    const bool isDerivation = box.type == "dimg";
    if (!isDerivation && box.type != "auxl" && box.type != "thmb") continue;
    Cursor cursor(box.content);
    const auto from = static_cast<std::uint32_t>(cursor.number(size));
    for (std::uint64_t left = cursor.number(2); left > 0 && !cursor.atEnd(); --left) {
      const auto to = static_cast<std::uint32_t>(cursor.number(size));
      references_.push_back(isDerivation ? Reference{from, to} : Reference{to, from});
    }
    if (references_.size() > maximumReferences) throw UnreadableImage("too many references");
  }
  std::ranges::sort(references_);
}

/// Finds levels and costs, once for each item.
class ItemReferences::Survey {
 public:
  Survey(const std::vector<Reference>& references, const Areas& areas, const Items& undecodable)
      : references_(references), areas_(areas), undecodable_(undecodable) {}

  /// Of an item with all that it refers to.
  struct Extent {
    int levels;
    std::uint64_t cost;  ///< pixels
  };

  /// `level`: how many references have led to `item`. A circle ends as too many of them.
  Extent extent(std::uint32_t item, int level) {
    const auto known = extents_.find(item);
    const Extent result = known != extents_.end() ? known->second : measured(item, level);
    if (level + result.levels > maximumLevels) throw UnreadableImage("references are too deep");
    return result;
  }

  std::uint64_t area(std::uint32_t item) const {
    const auto known = areas_.find(item);
    return known == areas_.end() ? 0 : std::min(known->second, greatestCost);
  }

 private:
  Extent measured(std::uint32_t item, int level) {
    Extent result{0,
                  undecodable_.contains(item) ? greatestCost : std::max(area(item), smallestCost)};
    if (level > maximumLevels) return result;
    auto reference = std::ranges::lower_bound(references_, item, {}, &Reference::from);
    for (; reference != references_.end() && reference->from == item; ++reference) {
      const Extent below = extent(reference->to, level + 1);
      result.levels = std::max(result.levels, below.levels + 1);
      result.cost = std::min(result.cost + below.cost, greatestCost);
    }
    return extents_[item] = result;
  }

  const std::vector<Reference>& references_;
  const Areas& areas_;
  const Items& undecodable_;
  std::unordered_map<std::uint32_t, Extent> extents_;
};

void ItemReferences::check(std::uint32_t primary, const Areas& areas,
                           const Items& undecodable) const {
  Survey survey(references_, areas, undecodable);
  for (const Reference& reference : references_) survey.extent(reference.from, 0);
  if (survey.extent(primary, 0).cost > freeCost + costPerPixel * survey.area(primary)) {
    throw UnreadableImage("more decodings than the picture can need");
  }
}

}  // namespace orvane
