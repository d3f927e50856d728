include(GNUInstallDirs)
install(TARGETS kestrine kestrinectl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
