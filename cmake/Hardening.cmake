# The protections that Debian builds its packages with, for everything that is compiled here.
include(CheckCXXCompilerFlag)

add_compile_options(-fPIE -Wformat -Werror=format-security)
# Not every compiler and processor knows these.
foreach(protection IN ITEMS stack-protector-strong stack-clash-protection cf-protection)
  string(MAKE_C_IDENTIFIER "HAS_${protection}" is_known)
  set(CMAKE_REQUIRED_FLAGS -Werror)
  check_cxx_compiler_flag(-f${protection} ${is_known})
  unset(CMAKE_REQUIRED_FLAGS)
  if(${is_known})
    add_compile_options(-f${protection})
  endif()
endforeach()

# The C library checks calls only in optimised code, and the sanitizers check them themselves. Some
# compilers define the macro of their own accord.
string(TOUPPER "CMAKE_CXX_FLAGS_${CMAKE_BUILD_TYPE}" flags_of_build_type)
if("${CMAKE_CXX_FLAGS} ${${flags_of_build_type}}" MATCHES "-O[123s]" AND NOT ORVANE_SANITIZERS)
  add_compile_options(-U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()

if(NOT APPLE)  # whose linker does as much by default
  add_link_options(-pie -Wl,-z,relro -Wl,-z,now)
endif()
