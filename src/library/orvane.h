#pragma once

#include <span>
#include <string>
#include <vector>

#include "batch/BatchOptions.h"
#include "picture/EncodingPlan.h"
#include "picture/ImageCharacteristics.h"
#include "picture/ImageCompressionResult.h"
#include "picture/ImageFormat.h"
#include "platform/foundation/Bytes.h"
#include "platform/foundation/LocalizedError.h"

/// The interface for programs that link the library; it is installed as <orvane/orvane.h>.
///
/// PNG, JPEG, HEIC, AVIF, WebP and JPEG XL in, told by their content, and out. `quality` is
/// perceptual, from 1 to 100, and means the same look in every format; numbers outside are clamped.
/// The same input, format, quality and codec libraries give the same bytes.
///
/// Any number of threads may call at once. Everything happens in the calling process: unlike the
/// command line, nothing here keeps a hostile file that takes over a codec away from the caller.
/// Codec libraries may write remarks to standard error. The first file that is written installs
/// handlers for SIGINT, SIGTERM and SIGHUP, each only if the disposition is the default one: they
/// remove files that are not whole yet, and let the signal end the process.
///
/// Errors are LocalizedError, whose what() is a sentence for the user, in French where the
/// catalogue "orvane-cli" has no other; and std::bad_alloc.
namespace orvane {

/// The class of a picture's content, and the plan for encoding it.
struct Analysis {
  ImageFormat format;  ///< of the file, by its content
  ImageCharacteristics characteristics;
  EncodingPlan plan;
};

/// Decodes the first picture of `file`, analyses it and plans its way to `format`. Encodes nothing.
/// Throws LocalizedError for a file that is no picture, incomplete or damaged; std::bad_alloc.
Analysis analyze(ByteView file, ImageFormat format, double quality);

/// Compresses a whole file in memory into a whole file of `format`, which may be the larger one:
/// the first picture, upright, without metadata, in the colour space that it had.
/// Throws LocalizedError where it cannot be decoded or encoded; std::bad_alloc.
Bytes compress(ByteView file, ImageFormat format, double quality);

/// Compresses the file at `path` into `folder`, which must exist, under the name of the source with
/// the extension of `format`. A file of that name is replaced in one step. Never throws: a failure
/// becomes the result's `error`. Two calls at once may not write to the same name.
ImageCompressionResult compressFile(const std::string& path, const std::string& folder,
                                    ImageFormat format, double quality);

/// Compresses the files at `paths` into `folder`, which must exist, on threads of its own: at most
/// `options.jobs` files at a time, fewer where the process may not have so many files open. Each
/// file in work takes the memory of a `compressFile`. The outputs are named in the order of
/// `paths`: as `compressFile` names them, and "photo-2.jpg" when "photo.jpg" is taken within the
/// batch. A file of that name is replaced in one step, a source of this batch only after all files
/// that read it. Returns a result for each path, in their order; `options.onResult` is told each of
/// them as soon as it is final. A file that fails says so in its result. Throws only what the
/// functions of `options` throw, and std::bad_alloc. Two calls at once may not write to the same
/// names.
std::vector<ImageCompressionResult> compressFiles(std::span<const std::string> paths,
                                                  const std::string& folder, ImageFormat format,
                                                  double quality, const BatchOptions& options = {});

}  // namespace orvane
