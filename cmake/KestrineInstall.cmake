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
foreach(page man1/kestrine.1 man1/kestrinectl.1 man5/kestrine-presets.5)
  cmake_path(GET page PARENT_PATH section)
  configure_file(share/man/${page} ${CMAKE_BINARY_DIR}/man/${page} @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/man/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/${section})
endforeach()
foreach(shell bash-completion zsh fish)
  install(DIRECTORY share/${shell} DESTINATION ${CMAKE_INSTALL_DATADIR})
endforeach()
