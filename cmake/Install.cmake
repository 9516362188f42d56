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

# pkg-config, for programs built without CMake. The prefix is found from the file's own place,
# so an installed tree can move; outside the system's library folders, Libs carries a run path.
file(RELATIVE_PATH ZET_PC_TO_PREFIX ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" ZET_PC_TO_PREFIX "${ZET_PC_TO_PREFIX}")
set(ZET_PC_RPATH "")
if(NOT WIN32 AND NOT CMAKE_INSTALL_PREFIX MATCHES "^/usr/?$")
  set(ZET_PC_RPATH " -Wl,-rpath,\${libdir}")
endif()
configure_file(${PROJECT_SOURCE_DIR}/cmake/zetsettings.pc.in ${CMAKE_CURRENT_BINARY_DIR}/zetsettings.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/zetsettings.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
