# What CPack makes the Debian package of.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velto)
set(CPACK_PACKAGE_CONTACT "Velto developers <developers@velto.org>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "AI voice agent for ordinary phone calls")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Give it a number and a goal: Velto places the call through the computer's
phone app, lets a realtime voice model hold the conversation with the user's
own API key, hangs up, gives the sound devices back and keeps the transcript.
.
The package brings the application (with windows, or without for a server),
the phone app velto-phone, the command line veltoctl, and velto-rehearse,
which plays one whole call without phone, key, screen or network.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
  "${CMAKE_CURRENT_BINARY_DIR}/prerm;${CMAKE_CURRENT_SOURCE_DIR}/debian/postrm")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Linked libraries are found by dpkg-shlibdeps. The rest is what a call cannot do without: the modules that the
# windows import, the accessibility bus, a sound server, a session bus, the providers' certificate authorities, and
# what makes velto-phone the desktop's choice for its URLs.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(needed at-spi2-core ca-certificates "default-dbus-session-bus | dbus-session-bus" desktop-file-utils
  "pulseaudio | pipewire-pulse")
foreach(module qtqml qtqml-models qtqml-workerscript qtquick qtquick-window qtquick-controls qtquick-templates
    qtquick-layouts)
  list(APPEND needed qml6-module-${module})
endforeach()
list(JOIN needed ", " CPACK_DEBIAN_PACKAGE_DEPENDS)
# A keyring, without which keys can only be kept in a file; the installer of the drivers; what a rehearsal starts.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
  "gnome-keyring | libkf5wallet-bin | keepassxc, pkexec, polkitd, dbus-daemon, xvfb")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "espeak-ng, gnome-keyring, pipewire-pulse, pulseaudio, qt6-wayland, wireplumber")
