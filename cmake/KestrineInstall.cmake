include(GNUInstallDirs)
install(TARGETS kestrine kestrinectl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Started by programs that use the library, never by people.
install(TARGETS kestrine-worker RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/kestrine)
# Strings tables, where NSBundle looks for them: beside the programs' folder.
foreach(language English Japanese)
  install(DIRECTORY share/${language}.lproj DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrine)
endforeach()
install(FILES share/convert.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrine)
# The manual pages get the version when they are installed.
foreach(page kestrine kestrinectl)
  configure_file(share/man/man1/${page}.1 ${CMAKE_BINARY_DIR}/man/${page}.1 @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/man/${page}.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endforeach()
install(DIRECTORY share/bash-completion DESTINATION ${CMAKE_INSTALL_DATADIR})
