#pragma once

#include <array>

namespace orvane {

/// The 64 samples of a block, or their coefficients, row by row.
using Block = std::array<float, 64>;

/// The discrete cosine transform of ITU-T T.81, A.3.3, in place. Gives the same numbers on every
/// processor.
void transformForward(Block& block);

/// Undoes transformForward.
void transformBack(Block& block);

}  // namespace orvane
