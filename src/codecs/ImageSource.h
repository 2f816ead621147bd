#pragma once

#include <memory>
#include <stdexcept>
#include <string_view>

#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// The bytes are no picture that can be read, or not a whole one. `what()` says why, for
/// developers.
class UnreadableImage : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// One file whose header has been read and found good. Refers to the file's bytes, which must
/// outlive it. One thread at a time.
class ImageSource {
 public:
  virtual ~ImageSource() = default;

  /// Chooses the reader by the bytes, never by a name, and reads the header.
  /// Throws UnreadableImage, std::bad_alloc.
  static std::unique_ptr<ImageSource> create(ByteView file);

  /// Uniform type identifier: "public.jpeg".
  virtual std::string_view typeIdentifier() const = 0;

  /// Pictures in the file, at least 1.
  virtual std::size_t frameCount() const { return 1; }

  /// As EXIF numbers it (1…8), or whatever other number stands there; 1 when nothing says. Readers
  /// whose library turns the picture by itself leave it at 1.
  virtual int orientation() const { return 1; }

  /// Decodes the first picture, whole and at full size. Its limits have been checked before any
  /// pixel memory is taken. Throws UnreadableImage (incomplete and damaged pictures are refused,
  /// never completed in silence), std::bad_alloc.
  virtual Image image() = 0;
};

}  // namespace orvane
