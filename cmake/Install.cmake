# cmake --install: the library, every header a caller can reach from the two exported classes,
# and a CMake package, so that a consumer writes find_package(zetsettings CONFIG REQUIRED) and
# links zetsettings::zetsettings.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

install(TARGETS zetsettings EXPORT zetsettingsTargets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
  ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
  RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/src/zetsettings DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h"
  PATTERN "tests" EXCLUDE PATTERN "bench" EXCLUDE PATTERN "fuzz" EXCLUDE)
install(EXPORT zetsettingsTargets NAMESPACE zetsettings:: DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zetsettings)

configure_package_config_file(${PROJECT_SOURCE_DIR}/cmake/zetsettingsConfig.cmake.in
  ${CMAKE_CURRENT_BINARY_DIR}/zetsettingsConfig.cmake
  INSTALL_DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zetsettings)
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/zetsettingsConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zetsettingsConfig.cmake
  ${CMAKE_CURRENT_BINARY_DIR}/zetsettingsConfigVersion.cmake
  DESTINATION ${CMAKE_INSTALL_LIBDIR}/cmake/zetsettings)
