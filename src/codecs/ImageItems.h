#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "codecs/ISOBaseMedia.h"
#include "codecs/ItemReferences.h"
#include "codecs/TransformativeProperties.h"

namespace orvane {

/// The image items of a file (ISO/IEC 23008-12) as its boxes list them; nothing is decoded. Safe on
/// any bytes, and refers to them: they must outlive it.
class ImageItems {
 public:
  explicit ImageItems(ByteView file);

  /// The type of the shown item ("av01", "hvc1", "iovl", …), but for a grid the type of its first
  /// tile; "grid" or "iden" when a derivation names nothing. Absent when the file does not begin
  /// with a file type box, names no primary item or does not give its type.
  std::optional<std::string_view> coding() const;

  /// Throws UnreadableImage when items refer to each other in a circle or through too many levels,
  /// when decoding the primary item would cost more than a picture of its size can need or ask for
  /// an overlay, and when decoders may read another meta box than this class.
  void checkReferences() const;

  /// The identifier of the primary item or, when that is an identity derivation (6.6.2.1), of the
  /// item that it names in the end.
  std::uint32_t shown() const { return shown_; }

  /// Adds the transformative properties of the identity derivations, in the order in which they
  /// apply, to those of the shown item. Throws UnreadableImage for a crop that cannot be.
  void addTransformations(TransformativeProperties& properties) const;

  /// The file for libraries that do not know identity derivations: it lists none of them, the shown
  /// item is the primary one, and alpha, thumbnails and metadata of the derivations that led to it
  /// are its own. Empty when the file has none. Throws UnreadableImage when the identifier of the
  /// shown item does not fit into its box, the list holds more items than it counts, or the new
  /// references fail `checkReferences`.
  Bytes withoutIdentities() const;

 private:
  ItemReferences::Items undecodable(const ItemReferences::Areas& areas) const;

  ByteView file_;
  ByteView pitm_, iinf_, iref_, iprp_, iloc_, idat_;
  bool hasOtherMeta_ = false;
  std::uint32_t primary_ = 0;
  std::uint32_t shown_ = 0;
  std::vector<std::uint32_t> derivations_;  ///< identity derivations, the primary item first
};

}  // namespace orvane
