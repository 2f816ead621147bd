#include "codecs/heic/X265Library.h"

#include <cstddef>
#include <mutex>
#include <stdexcept>
#include <thread>

#include "platform/foundation/Handle.h"
#include "platform/foundation/Memory.h"

namespace orvane::X265Library {
namespace {

/// The memory that x265 takes for the smallest picture: 4 MiB were measured.
constexpr std::size_t baseBytes = std::size_t{8} << 20;

/// For each pixel of noise 21 bytes were measured. x265 pads its pictures on every side.
constexpr std::size_t bytesPerPixel = 24;
constexpr std::size_t padding = 96;

/// x265 waits forever for a thread that did not start, and writes through the null pointer of a
/// failed allocation: probe both first.
void requireThreadAndMemory(const x265_param& param) {
  std::thread([] {}).join();
  const auto padded = [](int side) { return static_cast<std::size_t>(side) + 2 * padding; };
  const std::size_t pixels = padded(param.sourceWidth) * padded(param.sourceHeight);
  Memory::require(baseBytes + pixels * bytesPerPixel);
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
Encoder makeEncoder(x265_param& param) {
  static std::mutex opening;
  const std::scoped_lock lock(opening);
  requireThreadAndMemory(param);
  Encoder encoder(api().encoder_open(&param));
  if (encoder == nullptr) throw std::runtime_error("x265 does not take this picture");
  return encoder;
}

}  // namespace orvane::X265Library
