#include "BoxTree.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "codecs/ISOBaseMedia.h"
#include "support/BoxBuilder.h"

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
    const ByteView before = content.first(size);
    trees.push_back({.type = std::string(type),
                     .content = std::string(before.begin(), before.end()),
                     .children = read(content.subspan(size), levels - 1)});
  }
  return trees;
}

std::string BoxTree::written() const {
  std::string result = content;
  if (type == "iinf" && fieldsSize(type, test::view(content)) == content.size()) {
    const std::size_t size = content.size() - fullHeaderSize;
    result.replace(fullHeaderSize, size, test::bigEndian(children.size(), static_cast<int>(size)));
  }
  for (const BoxTree& box : children) result += box.written();
  return test::box(type, result);
}

BoxTree& BoxTree::child(const std::string& childType) {
  const auto found = std::ranges::find(children, childType, &BoxTree::type);
  return found != children.end() ? *found : children.emplace_back(BoxTree{.type = childType});
}

}  // namespace orvane::fuzz
