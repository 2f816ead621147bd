# What `cmake --install` puts under the prefix.
include(GNUInstallDirs)

install(TARGETS orvane-cli)
install(FILES docs/man/orvane-cli.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
install(FILES docs/man/fr/orvane-cli.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/fr/man1)
install(FILES LICENSE CHANGELOG.md DESTINATION ${CMAKE_INSTALL_DOCDIR})

install(FILES completions/orvane-cli.bash RENAME orvane-cli
  DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions)
install(FILES completions/_orvane-cli DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/site-functions)
install(FILES completions/orvane-cli.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
