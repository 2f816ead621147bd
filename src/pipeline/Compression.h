#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "codecs/ImageSource.h"
#include "picture/EncodingPlan.h"
#include "pipeline/OutputFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/foundation/SourceFile.h"

namespace orvane {

/// The way of one file from its bytes to the bytes of its output, which depend on nothing else.
/// One thread at a time.
class Compression {
 public:
  /// Reads the header of `file`, which must stay until it is decoded. `quality` is perceptual,
  /// 0…100. Throws ImageProcessingError::decodingFailed.
  Compression(ByteView file, ImageFormat format, double quality);

  /// Until `decode`.
  const ImageSource& source() const { return *source_; }

  /// Decodes, analyses and plans. Throws ImageProcessingError: decodingFailed or
  /// contextCreationFailed.
  void decode();

  /// Whether the file must stay until it is encoded.
  bool encodesFromFile() const { return repacks_; }

  /// After `decode`, once. Works on up to `threads` threads, on one where the picture is small.
  /// Throws ImageProcessingError::encodingFailed.
  Bytes encode(int threads = 1);

 private:
  ByteView file_;
  const OutputFormat& output_;
  double quality_;
  std::unique_ptr<ImageSource> source_;
  bool repacks_;
  std::optional<Picture> picture_;
  std::optional<EncodingPlan> plan_;
};

/// A source as it was read, and its output.
struct CompressedFile {
  std::int64_t sourceSize = 0;          ///< bytes
  std::shared_ptr<const void> storage;  ///< keeps `output` alive
  ByteView output;
};

/// Reads and compresses a file in this process. Throws FileError where it cannot be read,
/// ImageProcessingError.
CompressedFile compressOpenFile(const SourceFile& source, ImageFormat format, double quality);
CompressedFile compressHere(const std::string& path, ImageFormat format, double quality);

}  // namespace orvane
