#pragma once

#include <vector>

#include "codecs/jpeg/JPEGLibrary.h"

namespace orvane {

/// The order in which a progressive file holds its coefficients (ITU-T T.81, G.1.1.1): the means
/// first, then each component's other coefficients. Pictures differ in the script that makes them
/// smallest, and so do components of one picture.
using ScanScript = std::vector<jpeg_scan_info>;

/// Scripts for luma, in a file of its own, and for Cb and Cr in one. However these are joined, a
/// file has at most ten scans: some readers take no more.
struct ScanScripts {
  std::vector<ScanScript> luma;
  std::vector<ScanScript> chroma;

  static ScanScripts toTry();     ///< The smallest file is made by one luma and one chroma script.
  static ScanScripts quickest();  ///< one script of each
};

}  // namespace orvane
