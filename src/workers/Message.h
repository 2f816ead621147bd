#pragma once

#include <cstdint>

#include "picture/ImageFormat.h"

namespace orvane {

/// One message between the first process, the worker factory and the workers. The fields beside
/// `kind` count only where a kind names them.
struct Message {
  enum class Kind : std::uint8_t {
    // From the first process to the factory.
    start,  ///< a new worker is wanted
    reap,   ///< worker `process` is to be ended: its wait status is wanted

    // From the factory.
    started,  ///< worker `process` runs; the descriptor is its channel
    reaped,   ///< with the wait `status`
    refused,  ///< there is no such worker

    // From the first process to a worker.
    job,    ///< the descriptor is the source, to be read and encoded in `format` at `quality` with
            ///< `bytes` of memory, on up to `threads` threads; `sourceSize` is 0 where it is not
            ///< known; the payload is its name, to be shown
    grant,  ///< go on with `bytes` of memory

    // From a worker, in the order of its work.
    need,         ///< `bytes` of memory and `seconds` of processor time are needed from here on
    decoded,      ///< the picture is decoded; further failures are the encoder's
    memoryShort,  ///< an allocation has failed
    done,         ///< the payload is the output, or the descriptor holds it if it is longer;
                  ///< `bytes` is its size; `sourceSize` bytes were read
    failed,       ///< with `failure`; `errorNumber` is that of a file
  };
  enum class Failure : std::uint8_t { file, decoding, context, encoding };

  Kind kind = Kind::start;
  Failure failure = Failure::file;
  ImageFormat format = ImageFormat::png;
  std::int32_t process = 0;
  std::int32_t status = 0;
  std::int32_t errorNumber = 0;
  std::int32_t threads = 1;
  std::uint64_t bytes = 0;
  std::uint64_t seconds = 0;
  std::int64_t sourceSize = 0;
  double quality = 0;
};

}  // namespace orvane
