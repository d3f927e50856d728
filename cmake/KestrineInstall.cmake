include(GNUInstallDirs)
install(TARGETS kestrine kestrinectl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Strings tables, where NSBundle looks for them: beside the programs' folder.
install(DIRECTORY share/ DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrine FILES_MATCHING PATTERN "*.strings")
install(DIRECTORY share/man DESTINATION ${CMAKE_INSTALL_DATADIR})
install(DIRECTORY share/bash-completion DESTINATION ${CMAKE_INSTALL_DATADIR})
