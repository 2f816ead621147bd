#include "platform/foundation/AllocationFailures.h"

#include <atomic>
#include <cerrno>
#include <cstddef>

namespace orvane::AllocationFailures {
namespace {

/// Of the whole process, as the memory is.
constinit std::atomic<void (*)()> reaction = nullptr;

}  // namespace

void watch(void (*react)()) { reaction = react; }

void report() {
  if (auto* react = reaction.load()) react();
}

}  // namespace orvane::AllocationFailures

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)

// The GNU C library lets a program replace its allocation functions as a set ("Replacing malloc" in
// its manual). These pass every call on, and look at the result.

// NOLINTBEGIN(bugprone-reserved-identifier): the library's own names for them.
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

void* seen(void* block, bool isWanted = true) {
  if (block == nullptr && isWanted) orvane::AllocationFailures::report();
  return block;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) { return seen(__libc_malloc(size)); }

void* calloc(std::size_t count, std::size_t size) { return seen(__libc_calloc(count, size)); }

/// A size of 0 frees the block.
void* realloc(void* block, std::size_t size) { return seen(__libc_realloc(block, size), size > 0); }

void* memalign(std::size_t alignment, std::size_t size) {
  return seen(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) { return memalign(alignment, size); }

int posix_memalign(void** block, std::size_t alignment, std::size_t size) {
  if (alignment % sizeof(void*) != 0 || (alignment & (alignment - 1)) != 0) return EINVAL;
  void* const made = memalign(alignment, size);
  if (made == nullptr) return ENOMEM;
  *block = made;
  return 0;
}

void free(void* block) { __libc_free(block); }

}  // extern "C"

#endif
