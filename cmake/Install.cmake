# Installs the shared library with its headers, a CMake package
# (find_package(cfgdeck) gives cfgdeck::cfgdeck) and a pkg-config file.
include(CMakePackageConfigHelpers)

install(TARGETS cfgdeck EXPORT cfgdeckTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})

# Headers keep their folder, since includes are written from the root.
foreach(layer base config dialogs location platform printing store uicore)
  install(DIRECTORY ${PROJECT_SOURCE_DIR}/${layer}/
          DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/cfgdeck/${layer}
          FILES_MATCHING PATTERN "*.h"
          PATTERN "posix" EXCLUDE PATTERN "windows" EXCLUDE PATTERN "qt" EXCLUDE)
endforeach()

install(EXPORT cfgdeckTargets NAMESPACE cfgdeck:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/cfgdeck)
configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/cfgdeckConfig.cmake.in
  ${PROJECT_BINARY_DIR}/cfgdeckConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/cfgdeck)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/cfgdeckConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/cfgdeckConfig.cmake ${PROJECT_BINARY_DIR}/cfgdeckConfigVersion.cmake
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/cfgdeck)

configure_file(${PROJECT_SOURCE_DIR}/cmake/cfgdeck.pc.in ${PROJECT_BINARY_DIR}/cfgdeck.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/cfgdeck.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
