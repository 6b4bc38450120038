# Debian packages, one for each component: `cpack -G DEB` in a build directory makes those of its
# architecture, see `./dev release`.
if(CMAKE_CROSSCOMPILING)
  set(components updater dev)
else()
  set(components tools dev)
endif()

set(CPACK_COMPONENTS_ALL ${components})
set(CPACK_PACKAGE_NAME renewer)
set(CPACK_PACKAGE_CONTACT "the renewer authors <authors@renewer.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES TRUE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
if(CMAKE_CROSSCOMPILING)
  set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)
endif()

set(CPACK_DEBIAN_UPDATER_PACKAGE_NAME renewer)
set(CPACK_DEBIAN_UPDATER_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_UPDATER_DESCRIPTION "on-device firmware updater of a receiver family
One run checks that a package fits this unit, asks the user on the unit's own
LEDs or colour LCD, installs under a time limit and reboots the unit.

The running unit keeps its own copy in /data/sbin, which updates replace; this
one is what the image falls back to.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME renewer-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOOLS_DESCRIPTION "make and try update packages of a receiver family
renewer-pack makes, checks, shows and unpacks update packages, and says which
units take one. renewer-desk runs them in a simulated unit, shows its lights or
its screen, and tells how the update ended.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME librenewer-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libmd-dev, libsodium-dev")
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEV_DESCRIPTION "libraries for applications of a receiver family's units
Static libraries, headers, a CMake package and pkg-config files: reading,
checking, unpacking and finding update packages, checking their signatures,
and drawing on the grey OLED.")

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC) # SOURCE_DATE_EPOCH, when it is set
configure_file(debian-changelog.in changelog @ONLY)
set(CPACK_RENEWER_CHANGELOG ${CMAKE_CURRENT_BINARY_DIR}/changelog)
set(CPACK_RENEWER_SOURCE ${PROJECT_SOURCE_DIR})
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_SOURCE_DIR}/debian_files.cmake)

include(CPack)
