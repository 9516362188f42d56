# Third-party dependencies: Boost (headers only) everywhere; LMDB and libsodium for the
# portable registry where the system's registry is not there.

if(CMAKE_CROSSCOMPILING AND WIN32)
  # The MinGW sysroot has no Boost: use the host's headers, which are platform-neutral, through
  # a folder that holds nothing but them so that no other host header leaks in.
  find_path(ZET_HOST_BOOST_DIR boost/shared_ptr.hpp PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
  set(ZET_BOOST_SHIM ${CMAKE_BINARY_DIR}/boost-include)
  file(MAKE_DIRECTORY ${ZET_BOOST_SHIM})
  if(NOT EXISTS ${ZET_BOOST_SHIM}/boost)
    file(CREATE_LINK ${ZET_HOST_BOOST_DIR}/boost ${ZET_BOOST_SHIM}/boost SYMBOLIC)
  endif()
else()
  find_package(Boost 1.66 REQUIRED)
endif()

if(NOT WIN32)
  find_path(LMDB_INCLUDE_DIR lmdb.h REQUIRED)
  find_library(LMDB_LIBRARY lmdb REQUIRED)
  find_path(SODIUM_INCLUDE_DIR sodium.h REQUIRED)
  find_library(SODIUM_LIBRARY sodium REQUIRED)
  find_package(Threads REQUIRED)
endif()
