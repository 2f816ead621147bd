#pragma once

#include <memory>
#include <string_view>

#include "codecs/UnreadableImage.h"
#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/graphics/Image.h"

namespace orvane {

/// One file with a good header: its first picture has a size within ImageLimits. Refers to the
/// file's bytes, which must outlive it. One thread at a time.
class ImageSource {
 public:
  virtual ~ImageSource() = default;
  ImageSource(const ImageSource&) = delete;
  ImageSource& operator=(const ImageSource&) = delete;

  /// Chooses the reader by the bytes, never by a name, and reads the header.
  /// Throws UnreadableImage, std::bad_alloc.
  static std::unique_ptr<ImageSource> create(ByteView file);

  /// Uniform type identifier: "public.jpeg".
  std::string_view typeIdentifier() const { return format_.typeIdentifier(); }

  /// Pixels of the first picture as it is stored: before `orientation` and cropping.
  std::size_t width() const { return width_; }
  std::size_t height() const { return height_; }

  /// Memory that decoding takes for each pixel.
  std::size_t bytesPerPixel() const { return bytesPerPixel_; }

  /// The number in the file: 1…8 as EXIF defines them, or any other; 1 when the file has none.
  /// Readers whose library turns the picture by itself leave it at 1.
  int orientation() const { return orientation_; }

  /// Pictures in the file, at least 1.
  std::size_t frameCount() const { return frameCount_; }

  /// Decodes the first picture, whole and at full size. Throws UnreadableImage (incomplete and
  /// damaged pictures are refused, never completed in silence), std::bad_alloc.
  virtual Image image() = 0;

 protected:
  explicit ImageSource(ImageFormat format) : format_(format) {}

  /// To be called by every constructor, before it takes pixel memory. `bytesPerPixel` is the
  /// memory that decoding takes. Throws UnreadableImage past ImageLimits.
  void setSize(std::uint64_t width, std::uint64_t height, std::size_t bytesPerPixel);
  void setOrientation(int orientation) { orientation_ = orientation; }
  void setFrameCount(std::size_t count) { frameCount_ = count; }

 private:
  ImageFormat format_;
  std::size_t width_ = 0;
  std::size_t height_ = 0;
  std::size_t bytesPerPixel_ = 0;
  int orientation_ = 1;
  std::size_t frameCount_ = 1;
};

/// One row of the table of formats that can be read.
struct ImageReader {
  bool (*recognises)(ByteView file);
  std::unique_ptr<ImageSource> (*open)(ByteView file);  ///< throws as ImageSource::create does
};

/// The `open` of a reader whose source is made from the file alone.
template <class Source>
std::unique_ptr<ImageSource> openAs(ByteView file) {
  return std::make_unique<Source>(file);
}

// One per format; each lives in its own <Format>Reader.cpp.
extern const ImageReader pngReader;
extern const ImageReader jpegReader;
extern const ImageReader webpReader;
extern const ImageReader heicReader;
extern const ImageReader avifReader;
extern const ImageReader jxlReader;

}  // namespace orvane
