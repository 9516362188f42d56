# cpack -G DEB: one package with the library, its headers, CMake and pkg-config files and the
# tool, installed under /usr. Installing it provisions /var/lib/zetsettings for the system group
# zetsettings (packaging/debian/postinst); removing it leaves the store and its key.
set(CPACK_PACKAGE_NAME zetsettings)
set(CPACK_PACKAGE_VENDOR "zetsettings")
set(CPACK_PACKAGE_CONTACT "zetsettings developers <dev@zetsettings.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Settings library of a wireless LAN protection product, with its tool")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_GENERATOR DEB)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "adduser")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "libboost-dev, liblmdb-dev, libsodium-dev")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  ${PROJECT_SOURCE_DIR}/packaging/debian/postinst
  ${PROJECT_SOURCE_DIR}/packaging/debian/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
include(CPack)
