#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/foundation/Bytes.h"

/// Boxes of HEIF files (ISO/IEC 14496-12, ISO/IEC 23008-12), as the characters that stand in the
/// file. Item identifiers have 16 bits where nothing else is said.
namespace orvane::test {

std::string bigEndian(std::uint64_t value, int byteCount);

std::string box(const std::string& type, const std::string& content);
std::string fullBox(const std::string& type, int version, const std::string& content);

/// `brands`: the major one and the compatible ones, four characters each.
std::string ftyp(const std::string& brands);

/// `version` 2 has an identifier of 16 bits, 3 of 32.
std::string infe(int version, std::uint32_t item, const std::string& type);
std::string iinf(const std::vector<std::string>& entries);
std::string pitm(std::uint32_t item);
std::string meta(const std::string& boxes);

/// One box of `iref`: "dimg", "auxl", "thmb".
std::string reference(const std::string& type, std::uint32_t from,
                      const std::vector<std::uint32_t>& to);
std::string iref(const std::vector<std::string>& references);

/// Properties of items.
std::string ispe(std::uint32_t width, std::uint32_t height);
std::string irot(int quarters);
std::string imir(int axis);
std::string clap(std::uint32_t width, std::uint32_t height, int halvesRight = 0,
                 int halvesDown = 0);

/// The properties of an item by their places among all, from 1 on.
struct Association {
  std::uint32_t item;
  std::vector<std::uint8_t> properties;
};
std::string iprp(const std::vector<std::string>& properties,
                 const std::vector<Association>& associations);

inline ByteView view(const std::string& file) {
  return {reinterpret_cast<const std::uint8_t*>(file.data()), file.size()};
}

/// The data of a grid item, which stands for a picture of `width` × `height` pixels.
std::string gridData(int columns, int rows, std::uint16_t width, std::uint16_t height);

/// Changes to a file's items.
struct ItemChanges {
  struct Item {
    std::uint32_t identifier;
    std::string type;
    std::vector<std::string> properties;  ///< boxes
    std::string data;                     ///< none when empty
  };
  std::vector<Item> added;
  std::vector<std::string> references;   ///< added boxes
  std::optional<std::uint32_t> primary;  ///< the new one
};

/// `file`, as libheif or libavif writes it, with a changed meta box. The data stay where they are:
/// the new box comes last. Throws std::runtime_error for boxes of versions that those do not write.
Bytes withItems(const Bytes& file, const ItemChanges& changes);

/// The identifier of the primary item.
std::uint32_t primaryItem(const Bytes& file);

/// `file` with an identity derivation of its primary item as the new primary one. `properties`:
/// boxes. `identifier`: of the new item, which must be free.
Bytes withIdentity(const Bytes& file, std::uint32_t identifier,
                   const std::vector<std::string>& properties);

}  // namespace orvane::test
