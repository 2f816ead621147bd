#include "BoxTree.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "codecs/ISOBaseMedia.h"

namespace orvane::fuzz {
namespace {

constexpr std::size_t fullHeaderSize = 4;  ///< version and flags

/// Bytes of a container's fields before its boxes; absent for boxes that are no containers.
std::optional<std::size_t> fieldsSize(std::string_view type, ByteView content) {
  constexpr std::array<std::string_view, 7> plain{"iprp", "ipco", "moov", "trak",
                                                  "mdia", "minf", "stbl"};
  if (std::ranges::find(plain, type) != plain.end()) return 0;
  if (type == "meta" || type == "iref") return fullHeaderSize;
  if (type != "iinf") return std::nullopt;
  const int version = content.empty() ? 0 : content.front();
  return fullHeaderSize + ISOBaseMedia::identifierSize(version, 1);
}

}  // namespace

std::vector<BoxTree> BoxTree::read(ByteView boxes, int levels) {
  std::vector<BoxTree> trees;
  for (ISOBaseMedia::Cursor cursor(boxes); !cursor.atEnd();) {
    const auto [type, content] = takeBox(cursor);
    if (type.empty()) break;
    const auto fields = levels > 0 ? fieldsSize(type, content) : std::nullopt;
    const auto size = std::min(fields.value_or(content.size()), content.size());
    trees.push_back({.type = std::string(type),
                     .content = Bytes(content.begin(), content.begin() + std::ptrdiff_t(size)),
                     .children = read(content.subspan(size), levels - 1)});
  }
  return trees;
}

void BoxTree::write(Bytes& out) const {
  const std::size_t start = out.size();
  appendNumber(out, 0, 4);  // the size
  out.insert(out.end(), type.begin(), type.end());
  out.insert(out.end(), content.begin(), content.end());
  for (const BoxTree& box : children) box.write(out);
  const auto put = [&](std::size_t at, std::size_t byteCount, std::uint64_t value) {
    for (std::size_t i = byteCount; i-- > 0; value >>= 8) {
      out[at + i] = static_cast<std::uint8_t>(value);
    }
  };
  put(start, 4, out.size() - start);
  if (type == "iinf" && content.size() > fullHeaderSize) {
    put(start + 8 + fullHeaderSize, content.size() - fullHeaderSize, children.size());
  }
}

BoxTree& BoxTree::child(const std::string& childType) {
  const auto found = std::ranges::find(children, childType, &BoxTree::type);
  return found != children.end() ? *found : children.emplace_back(BoxTree{.type = childType});
}

void appendNumber(Bytes& out, std::uint64_t value, int byteCount) {
  for (int i = byteCount - 1; i >= 0; --i) {
    out.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }
}

}  // namespace orvane::fuzz
