# One place for the warnings of every target of the project.
option(ORVANE_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)

add_library(orvane-warnings INTERFACE)
target_compile_options(orvane-warnings INTERFACE
  # Designated initialisers leave members out on purpose: the rest has defaults.
  -Wall -Wextra -Wno-missing-field-initializers -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wundef
  # GCC 12 sees overlaps in its own std::string where there are none.
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
  $<$<BOOL:${ORVANE_WARNINGS_AS_ERRORS}>:-Werror>)
