# Every library that the tool calls, gathered in one target. All of them ship pkg-config files, so
# one module finds them and no find-module of our own is needed.
find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
find_package(OpenMP REQUIRED COMPONENTS CXX)  # libimagequant's thread count is OpenMP's

set(modules
  libpng libjpeg libwebp libwebpmux libwebpdemux libjxl libheif libde265 x265 libavif imagequant zlib lcms2
  icu-uc icu-i18n libexif uuid)
if(CMAKE_SYSTEM_NAME STREQUAL Linux)
  list(APPEND modules libseccomp)  # the sandbox of the workers
endif()
foreach(module IN LISTS modules)
  pkg_check_modules(${module} REQUIRED IMPORTED_TARGET GLOBAL ${module})
endforeach()
find_package(nlohmann_json REQUIRED)

add_library(orvane-dependencies INTERFACE)
list(TRANSFORM modules PREPEND PkgConfig::)
target_link_libraries(orvane-dependencies INTERFACE
  ${modules} nlohmann_json::nlohmann_json OpenMP::OpenMP_CXX Threads::Threads)
