#include "codecs/heic/X265Library.h"

#include <algorithm>
#include <cstddef>
#include <mutex>
#include <stdexcept>
#include <string>
#include <system_error>

#include "platform/foundation/Handle.h"
#include "platform/foundation/Memory.h"
#include "platform/foundation/Parallel.h"

namespace orvane::X265Library {
namespace {

/// The memory that x265 takes for the smallest picture: 4 MiB were measured.
constexpr std::size_t baseBytes = std::size_t{8} << 20;

/// For each pixel of noise 21 bytes were measured. x265 pads its pictures on every side.
constexpr std::size_t bytesPerPixel = 24;
constexpr std::size_t padding = 96;

/// For the stack of each thread, where the user has not set another limit. The C library keeps five
/// of those that threads have left for the next ones.
constexpr std::size_t stackBytes = std::size_t{8} << 20;
constexpr int keptStacks = 5;

/// x265 waits forever for a thread that did not start: probe first. One thread codes the picture,
/// and with wavefronts those of a pool do its rows. Returns how many threads there will be.
int setThreads(x265_param& param, int threads) {
  const int coders = param.bEnableWavefront != 0 ? 2 : 1;
  const int startable = startableThreads(coders == 1 ? 1 : 1 + threads);
  if (startable < coders) {
    throw std::system_error(std::make_error_code(std::errc::resource_unavailable_try_again));
  }
  setOption(param, "pools", coders == 1 ? "none" : std::to_string(startable - 1).c_str());
  return startable;
}

/// x265 writes through the null pointer of a failed allocation: probe first.
void requireMemory(const x265_param& param, int threads) {
  const auto padded = [](int side) { return static_cast<std::size_t>(side) + 2 * padding; };
  const std::size_t pixels = padded(param.sourceWidth) * padded(param.sourceHeight);
  Memory::require(baseBytes + pixels * bytesPerPixel +
                  static_cast<std::size_t>(std::max(threads - keptStacks, 0)) * stackBytes);
}

}  // namespace

const x265_api& api() {
  const x265_api* found = x265_api_get(8);
  if (found == nullptr) throw std::runtime_error("this x265 has no 8-bit build");
  return *found;
}

Param makeParam(const char* preset, const char* tuning, const char* profile) {
  Param param = owned<Param>(api().param_alloc());
  if (api().param_default_preset(param.get(), preset, tuning) != 0 ||
      api().param_apply_profile(param.get(), profile) != 0) {
    throw std::runtime_error("x265 lacks a preset or a profile");
  }
  return param;
}

void setOption(x265_param& param, const char* name, const char* value) {
  if (api().param_parse(&param, name, value) != 0) throw std::runtime_error(name);
}

Picture makePicture(x265_param& param) {
  Picture picture = owned<Picture>(api().picture_alloc());
  api().picture_init(&param, picture.get());
  return picture;
}

/// x265 fills its tables of functions when the first encoder is opened, and does so unguarded.
Encoder makeEncoder(x265_param& param, int threads) {
  static std::mutex opening;
  const std::scoped_lock lock(opening);
  requireMemory(param, setThreads(param, threads));
  Encoder encoder(api().encoder_open(&param));
  if (encoder == nullptr) throw std::runtime_error("x265 does not take this picture");
  return encoder;
}

}  // namespace orvane::X265Library
