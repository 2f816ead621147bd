#pragma once

#include <x265.h>

#include <memory>

/// x265's handles, and what it has to be guarded from. Functions that return a handle throw
/// std::bad_alloc, and std::runtime_error when x265 refuses.
namespace orvane::X265Library {

/// x265 for 8-bit pictures: the library itself, or the one of its several builds that is for them.
/// Throws std::runtime_error when there is none.
const x265_api& api();

struct Deleter {
  void operator()(x265_param* param) const { api().param_free(param); }
  void operator()(x265_picture* picture) const { api().picture_free(picture); }
  void operator()(x265_encoder* encoder) const { api().encoder_close(encoder); }
};
using Param = std::unique_ptr<x265_param, Deleter>;
using Picture = std::unique_ptr<x265_picture, Deleter>;
using Encoder = std::unique_ptr<x265_encoder, Deleter>;

/// Parameters with the values of a preset, a tuning and a profile.
Param makeParam(const char* preset, const char* tuning, const char* profile);

/// Sets an option by the name that it has on x265's command line. Throws std::runtime_error.
void setOption(x265_param& param, const char* name, const char* value);

/// A picture of the size and form that `param` says, without planes.
Picture makePicture(x265_param& param);

/// Up to `threads` threads code rows if `param` has wavefronts, fewer if the system refuses them.
/// May be called by several threads. Throws std::system_error when no thread can be started.
Encoder makeEncoder(x265_param& param, int threads);

}  // namespace orvane::X265Library
