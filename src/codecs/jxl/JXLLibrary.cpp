#include "codecs/jxl/JXLLibrary.h"

#include <new>

#include "codecs/UnreadableImage.h"
#include "platform/foundation/Parallel.h"

namespace orvane::JXLLibrary {

JxlDecoderPtr makeDecoder(ByteView file, int events) {
  JxlDecoderPtr decoder = JxlDecoderMake(nullptr);
  if (!decoder) throw std::bad_alloc();
  if (JxlDecoderSubscribeEvents(decoder.get(), events) != JXL_DEC_SUCCESS ||
      JxlDecoderSetInput(decoder.get(), file.data(), file.size()) != JXL_DEC_SUCCESS) {
    throw UnreadableImage("libjxl takes no input");
  }
  JxlDecoderCloseInput(decoder.get());
  return decoder;
}

void advance(JxlDecoder* decoder, JxlDecoderStatus event) {
  if (JxlDecoderProcessInput(decoder) != event) throw UnreadableImage("damaged or incomplete");
}

JxlParallelRetCode runInParallel(void* threads, void* work, JxlParallelRunInit init,
                                 JxlParallelRunFunction function, std::uint32_t begin,
                                 std::uint32_t end) noexcept {
  const int count = *static_cast<const int*>(threads);
  const JxlParallelRetCode status = init(work, static_cast<std::size_t>(count));
  if (status != 0) return status;
  inParallel(end - begin, count, [=](std::size_t index, std::size_t thread) {
    function(work, begin + static_cast<std::uint32_t>(index), thread);
  });
  return 0;
}

}  // namespace orvane::JXLLibrary
