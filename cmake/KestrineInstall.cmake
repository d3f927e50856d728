install(TARGETS kestrine kestrinectl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
# Started by programs that use the library, never by people.
install(TARGETS kestrine-worker RUNTIME DESTINATION ${CMAKE_INSTALL_LIBEXECDIR}/kestrine)
# Strings tables, where NSBundle looks for them: beside the programs' folder.
foreach(language English Japanese)
  install(DIRECTORY share/${language}.lproj DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrine)
endforeach()
install(FILES share/convert.schema.json share/shard-log.schema.json DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrine)
install(DIRECTORY share/scale-out share/unattended DESTINATION ${CMAKE_INSTALL_DATADIR}/kestrine USE_SOURCE_PERMISSIONS)
# The manual pages get the version when they are installed.
foreach(page man1/kestrine.1 man1/kestrinectl.1 man5/kestrine-presets.5)
  cmake_path(GET page PARENT_PATH section)
  configure_file(share/man/${page} ${CMAKE_BINARY_DIR}/man/${page} @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/man/${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/${section})
endforeach()
foreach(shell bash-completion zsh fish)
  install(DIRECTORY share/${shell} DESTINATION ${CMAKE_INSTALL_DATADIR})
endforeach()
# The library with the C interface, for find_package(kestrine) and pkg-config.
set(KESTRINE_CMAKE_FOLDER ${CMAKE_INSTALL_LIBDIR}/cmake/kestrine)
install(TARGETS libkestrine EXPORT kestrine
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library NAMELINK_COMPONENT development)
install(FILES src/libkestrine/kestrine.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
# The static archive with the C++ interface is a component of its own, since it needs further libraries.
install(TARGETS kestrine_desktop EXPORT kestrine-desktop
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development
        FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/kestrine COMPONENT development)
foreach(export kestrine kestrine-desktop)
  install(EXPORT ${export} NAMESPACE kestrine:: FILE ${export}-targets.cmake DESTINATION ${KESTRINE_CMAKE_FOLDER}
          COMPONENT development)
endforeach()
configure_file(cmake/kestrine-config.cmake.in ${CMAKE_BINARY_DIR}/kestrine-config.cmake @ONLY)
include(CMakePackageConfigHelpers)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/kestrine-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/kestrine-config.cmake ${CMAKE_BINARY_DIR}/kestrine-config-version.cmake
        DESTINATION ${KESTRINE_CMAKE_FOLDER} COMPONENT development)
file(RELATIVE_PATH KESTRINE_PREFIX_FROM_PC ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
foreach(module kestrine kestrine-desktop)
  configure_file(cmake/${module}.pc.in ${CMAKE_BINARY_DIR}/${module}.pc @ONLY)
  install(FILES ${CMAKE_BINARY_DIR}/${module}.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)
endforeach()
