# Installed programs find the installed library through a run path relative to themselves, so a
# prefix can be anywhere (and moved) with nothing on the library path. The build tree keeps its
# absolute run paths.
include(GNUInstallDirs)

if(NOT WIN32 AND NOT APPLE)
  file(RELATIVE_PATH ZET_BIN_TO_LIB ${CMAKE_INSTALL_FULL_BINDIR} ${CMAKE_INSTALL_FULL_LIBDIR})
  set(CMAKE_INSTALL_RPATH "$ORIGIN/${ZET_BIN_TO_LIB}")
endif()
