#pragma once

#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it before itself
#include <new>

#include <jpeglib.h>

#include <jerror.h>  // numbers its messages by what jpeglib.h defines

namespace orvane {

/// Turns libjpeg's errors, which it reports by a call that must not return, into exceptions. Set it
/// as the `err` of one compressor or decompressor, which it must outlive.
class JPEGErrors : public jpeg_error_mgr {
 public:
  JPEGErrors();
  JPEGErrors(const JPEGErrors&) = delete;
  JPEGErrors& operator=(const JPEGErrors&) = delete;

  /// Runs `call`, which calls libjpeg. An error of libjpeg is thrown as `Error` with libjpeg's own
  /// text, or as std::bad_alloc. It leaves `call` by a long jump: no object that `call` creates may
  /// have a destructor.
  template <typename Error, typename Call>
  void run(const Call& call) {
    if (setjmp(start_) == 0) {
      call();
      return;
    }
    if (isOutOfMemory()) throw std::bad_alloc();
    throw Error(text_);
  }

  /// Ends the running call with an error of our own. Only libjpeg's callbacks may call it.
  [[noreturn]] void fail(const char* text);

 private:
  [[noreturn]] static void fail(j_common_ptr info);
  bool isOutOfMemory() const;

  std::jmp_buf start_;
  char text_[JMSG_LENGTH_MAX];
};

/// Owners of the memory that libjpeg hangs on its two structures. Set `err` first, then create.
struct JPEGDecompressor : jpeg_decompress_struct {
  JPEGDecompressor() : jpeg_decompress_struct{} {}
  ~JPEGDecompressor() { jpeg_destroy_decompress(this); }
  JPEGDecompressor(const JPEGDecompressor&) = delete;
  JPEGDecompressor& operator=(const JPEGDecompressor&) = delete;
};
struct JPEGCompressor : jpeg_compress_struct {
  JPEGCompressor() : jpeg_compress_struct{} {}
  ~JPEGCompressor() { jpeg_destroy_compress(this); }
  JPEGCompressor(const JPEGCompressor&) = delete;
  JPEGCompressor& operator=(const JPEGCompressor&) = delete;
};

}  // namespace orvane
