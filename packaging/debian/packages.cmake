# The Debian packages "orvane" and "orvane-cli": cpack -G DEB, in the build folder.
set(CPACK_GENERATOR DEB)
set(CPACK_COMPONENTS_ALL terminal window)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/complete.cmake)
set(CPACK_ORVANE_DEBIAN_FILES ${CMAKE_CURRENT_LIST_DIR})
set(CPACK_ORVANE_PACKAGES orvane-cli orvane)  # of the components, in their order

set(CPACK_PACKAGE_CONTACT "The Orvane authors <orvane@velmora.org>")
set(CPACK_PACKAGE_VENDOR "The Orvane authors")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://velmora.org/orvane/")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_STRICT_CHECKSUM ON)

set(server "pipewire-pulse | pulseaudio")

set(CPACK_DEBIAN_TERMINAL_PACKAGE_NAME orvane-cli)
set(CPACK_DEBIAN_TERMINAL_PACKAGE_RECOMMENDS "${server}")
set(CPACK_COMPONENT_TERMINAL_DESCRIPTION
"instrument tuner for the terminal
Listens to an audio input or reads recordings, measures the fundamental of
the note played, and tells the nearest note and how far it lies from its
ideal pitch, in equal temperament or in one of many unequal ones. Readings
are text, JSON or comma-separated values.")

set(CPACK_DEBIAN_WINDOW_PACKAGE_NAME orvane)
set(CPACK_DEBIAN_WINDOW_PACKAGE_DEPENDS
  "orvane-cli (= ${PROJECT_VERSION}), qt6-speech-speechd-plugin")
set(CPACK_DEBIAN_WINDOW_PACKAGE_RECOMMENDS "${server}, qt6-wayland, speech-dispatcher")
set(CPACK_COMPONENT_WINDOW_DESCRIPTION
"instrument tuner for the desktop
Listens to an audio input, measures the fundamental of the note played, and
shows the nearest note and how far it lies from its ideal pitch, in equal
temperament or in one of many unequal ones. It has eleven lamps, a needle,
texts and a level meter, and speaks for those who play without looking.")

include(CPack)
