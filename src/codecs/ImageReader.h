#pragma once

#include "codecs/ImageSource.h"

namespace orvane {

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
