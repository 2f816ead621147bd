#include "support/FailingZlib.h"

#include <dlfcn.h>
#include <zlib.h>

namespace {

thread_local int failuresLeft = 0;

}  // namespace

/// Replaces zlib's function: the linker prefers the program's symbols to its libraries'.
extern "C" int compress2(Bytef* into, uLongf* size, const Bytef* from, uLong count, int level) {
  static const auto ofZlib = reinterpret_cast<decltype(&compress2)>(dlsym(RTLD_NEXT, "compress2"));
  if (failuresLeft == 0) return ofZlib(into, size, from, count, level);
  --failuresLeft;
  return Z_MEM_ERROR;
}

namespace orvane::test {

FailingZlib::FailingZlib(int count) { failuresLeft = count; }

FailingZlib::~FailingZlib() { failuresLeft = 0; }

}  // namespace orvane::test
