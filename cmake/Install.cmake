# The files that `cmake --install` puts under the prefix.
include(GNUInstallDirs)

install(TARGETS orvane-cli)
install(FILES docs/man/orvane-cli.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/man/fr/orvane-cli.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/fr/man1)
install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(FILES completions/orvane-cli.bash RENAME orvane-cli
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/_orvane-cli DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES completions/orvane-cli.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)

# The library: <orvane/orvane.h> with the headers it includes, each beside it at its path from src/.
install(TARGETS orvane ARCHIVE)
install(FILES src/library/orvane.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvane)
foreach(header IN ITEMS
    batch/BatchOptions.h picture/EncodingPlan.h picture/ImageCharacteristics.h picture/ImageCompressionResult.h picture/ImageFormat.h
    platform/foundation/Bytes.h platform/foundation/LocalizedError.h)
  cmake_path(GET header PARENT_PATH folder)
  install(FILES src/${header} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/orvane/${folder})
endforeach()

# find_package(Orvane)
include(CMakePackageConfigHelpers)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Orvane)
configure_package_config_file(cmake/OrvaneConfig.cmake.in OrvaneConfig.cmake
  INSTALL_DESTINATION ${package_folder} PATH_VARS CMAKE_INSTALL_LIBDIR CMAKE_INSTALL_INCLUDEDIR)
write_basic_package_version_file(OrvaneConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES cmake/Dependencies.cmake ${CMAKE_CURRENT_BINARY_DIR}/OrvaneConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/OrvaneConfigVersion.cmake DESTINATION ${package_folder})

# pkg-config orvane
list(TRANSFORM modules REPLACE "^PkgConfig::" "" OUTPUT_VARIABLE required_modules)
list(JOIN required_modules " " required_modules)
file(RELATIVE_PATH prefix_from_modules /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
configure_file(cmake/orvane.pc.in orvane.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/orvane.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
