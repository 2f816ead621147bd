// The sanitizers' settings for every program of this project. Linked in sanitizer builds only.

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_options();
extern "C" const char* __tsan_default_suppressions();

/// x265 3.5 keeps some of its tables and parameters when an encoder is closed; libimagequant 2.17
/// loses two rows of floating-point pixels of every picture that has more than four million.
const char* __lsan_default_suppressions() { return "leak:libx265\nleak:libimagequant\n"; }

const char* __lsan_default_options() { return "print_suppressions=0"; }

/// Codec libraries are built without the checks, so that the guards of tables made at first use,
/// and of work that goes from thread to thread, go unseen.
const char* __tsan_default_suppressions() {
  return "called_from_lib:libjxl.so\ncalled_from_lib:libx265.so\n";
}
