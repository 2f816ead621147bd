#pragma once

#include <span>
#include <vector>

#include "codecs/jpeg/JPEGLibrary.h"
#include "platform/foundation/Bytes.h"

namespace orvane {

/// The order in which a progressive file holds its coefficients (ITU-T T.81, G.1.1.1): the means
/// first, then each component's other coefficients. Pictures differ in the script that makes them
/// smallest, and so do components of one picture.
using ScanScript = std::vector<jpeg_scan_info>;

/// The scripts to try for one component or three. However their components are joined, a file has
/// at most ten scans: some readers take no more.
std::vector<ScanScript> scanScripts(std::size_t components);

/// Of files that hold the same picture in different scripts: one file with the smallest scans of
/// each component. libjpeg has written the files, without restart markers. The means' scans must
/// come first, and be the same, in all of them.
Bytes joinSmallestScans(std::span<const Bytes> files);

}  // namespace orvane
