#pragma once

#include <cstdint>
#include <map>
#include <span>

#include "platform/foundation/Bytes.h"

namespace orvane {

/// The parts of a file that belong to some of a picture's components. These components share their
/// tables and the scan of their means.
struct ComponentScans {
  Bytes head;         ///< the bytes before the frame header, without the first marker
  Bytes frameHeader;  ///< ITU-T T.81, B.2.2
  Bytes means;        ///< their scan, with its tables
  std::map<std::uint8_t, Bytes> bands;  ///< the other scans, by component

  /// Of a progressive file of these components that libjpeg has written, without restart markers.
  explicit ComponentScans(ByteView file);

  /// Takes those components' scans that are smaller in another file of the same levels.
  void improveWith(ByteView file);
};

/// One file of a picture whose components are in several groups, luma's first.
Bytes join(std::span<const ComponentScans> groups);

}  // namespace orvane
