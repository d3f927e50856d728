include(GNUInstallDirs)
install(TARGETS kestrine kestrinectl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Strings tables, where NSBundle looks for them: beside the programs' folder.
foreach(language English Japanese)
  install(DIRECTORY share/${language}.lproj DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrine)
endforeach()
install(DIRECTORY share/man DESTINATION ${CMAKE_INSTALL_DATADIR})
install(DIRECTORY share/bash-completion DESTINATION ${CMAKE_INSTALL_DATADIR})
