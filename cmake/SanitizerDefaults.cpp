// What the sanitizers are to know in every program of this project. Linked in sanitizer builds
// only.

extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_options();

/// x265 3.5 keeps some of its tables and parameters when an encoder is closed.
const char* __lsan_default_suppressions() { return "leak:libx265\n"; }

const char* __lsan_default_options() { return "print_suppressions=0"; }
