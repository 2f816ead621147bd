#include "codecs/jpeg/JPEGLibrary.h"

namespace orvane {

JPEGErrors::JPEGErrors() : jpeg_error_mgr{}, start_{}, text_{} {
  jpeg_std_error(this);
  error_exit = [](j_common_ptr info) { fail(info); };
  // libjpeg would print warnings and traces.
  emit_message = [](j_common_ptr, int) {};
}

void JPEGErrors::fail(const char* text) {
  msg_code = JERR_NOTIMPL;
  std::snprintf(text_, sizeof text_, "%s", text);
  std::longjmp(start_, 1);
}

void JPEGErrors::fail(j_common_ptr info) {
  auto* errors = static_cast<JPEGErrors*>(info->err);
  errors->format_message(info, errors->text_);
  std::longjmp(errors->start_, 1);
}

bool JPEGErrors::isOutOfMemory() const { return msg_code == JERR_OUT_OF_MEMORY; }

}  // namespace orvane
