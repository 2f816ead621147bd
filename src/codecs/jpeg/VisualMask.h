#pragma once

#include <cstddef>
#include <vector>

#include "codecs/OpaqueRows.h"

namespace orvane {

/// How plainly an error is seen in a part of a picture: about 2 and 4 where it is flat, towards 0
/// where detail hides it.
struct ErrorVisibility {
  float fine;    ///< of errors of a few pixels' size
  float coarse;  ///< of errors about as large as a block
};

/// The visibility of errors in each block of 8×8 pixels of a picture, from the variance of luma
/// around it. The variance reaches beyond the block: what is beside an error hides it too.
class VisualMask {
 public:
  /// Reads the whole picture, which has at least one pixel. Throws std::bad_alloc.
  explicit VisualMask(OpaqueRows& rows);

  /// Of the mean of `count` × `count` blocks, the first of them in column `x` and row `y` of
  /// blocks. Those outside the picture do not count.
  ErrorVisibility at(std::size_t x, std::size_t y, std::size_t count) const;

 private:
  std::size_t columns_;
  std::size_t rows_;
  std::vector<float> fine_;    ///< of luma at half its resolution, by block
  std::vector<float> coarse_;  ///< at a quarter of it
};

}  // namespace orvane
