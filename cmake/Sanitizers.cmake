# Sanitizers for everything that is compiled here. Programs link orvane-sanitizers.
set(ORVANE_SANITIZERS "" CACHE STRING "Sanitizers, as -fsanitize names them: address,undefined or thread")

if(ORVANE_SANITIZERS)
  add_compile_options(
    -fsanitize=${ORVANE_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer
    # GCC takes what its sanitizers insert for uses of variables without a value.
    $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_link_options(-fsanitize=${ORVANE_SANITIZERS})
  # GCC's names for what it checks. Clang 14 has none, and the sources ask for GCC's.
  foreach(sanitizer IN ITEMS address thread)
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang AND ORVANE_SANITIZERS MATCHES ${sanitizer})
      string(TOUPPER ${sanitizer} name)
      add_compile_definitions(__SANITIZE_${name}__)
    endif()
  endforeach()
  add_library(orvane-sanitizers OBJECT ${CMAKE_CURRENT_LIST_DIR}/SanitizerDefaults.cpp)
else()
  add_library(orvane-sanitizers INTERFACE)
endif()
