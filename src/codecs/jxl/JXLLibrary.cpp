#include "codecs/jxl/JXLLibrary.h"

#include <new>

#include "codecs/UnreadableImage.h"

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

}  // namespace orvane::JXLLibrary
