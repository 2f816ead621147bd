#pragma once

#include <csetjmp>
#include <cstdio>  // jpeglib.h needs it before itself
#include <new>

#include <jpeglib.h>

#include <jerror.h>  // numbers its messages by what jpeglib.h defines

namespace orvane {

/// Brings libjpeg's errors, which it reports by a call that must not return, back as exceptions.
/// To be set as the `err` of one compressor or decompressor, which it must outlive.
class JPEGErrors : public jpeg_error_mgr {
 public:
  JPEGErrors();
  JPEGErrors(const JPEGErrors&) = delete;
  JPEGErrors& operator=(const JPEGErrors&) = delete;

  /// Runs `call`, which calls libjpeg. What libjpeg reports while it runs comes out as `Error` with
  /// libjpeg's own text, or as std::bad_alloc. `call` is then left by a long jump: no object that
  /// it creates may have a destructor.
  template <typename Error, typename Call>
  void run(const Call& call) {
    if (setjmp(start_) == 0) {
      call();
      return;
    }
    if (isOutOfMemory()) throw std::bad_alloc();
    throw Error(text_);
  }

  /// Ends the running call with an error of our own. To be called from libjpeg's callbacks.
  [[noreturn]] void fail(const char* text);

 private:
  [[noreturn]] static void fail(j_common_ptr info);
  bool isOutOfMemory() const;

  std::jmp_buf start_;
  char text_[JMSG_LENGTH_MAX];
};

/// Owners of what libjpeg hangs on its two structures. Set `err` first, then create.
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
