/// What LeakSanitizer is not to report: memory that x265 loses by itself, about a kilobyte for each
/// picture (3.5). For the tests and for the program that they run.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libx265\n"; }
