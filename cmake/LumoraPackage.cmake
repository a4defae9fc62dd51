# The Debian package, made by CPack:  cpack -G DEB  in a build tree, or packaging/make-package.sh.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME lumora)
set(CPACK_PACKAGE_VENDOR Tessaly)
# The first line is the summary; the rest stands below it.
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "viewer, player, converter and editor for pictures and media files")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Lumora V3 works on a list: point it at a folder or a list file, pick what you
want to see, and step through it. It shows some sixty picture file types,
plays sounds, videos and MIDI files, runs timed shows, and converts whole lists
to more than twenty formats, also without a display.
Files are decoded in locked-in processes.")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Who makes the package, as Debian's own tools are told it.
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Tessaly <lumora@localhost>")
if(NOT "$ENV{DEBEMAIL}" STREQUAL "")
    set(CPACK_DEBIAN_PACKAGE_MAINTAINER "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
endif()

# The libraries of the program and of its modules, with the versions that they need, come from the binaries themselves.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Beside them: folders and triggers for icons and types, and what is started or loaded by name.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "hicolor-icon-theme, shared-mime-info")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS
    "breeze-icon-theme, desktop-file-utils, qt6-translations-l10n, qt6-wayland, timgm6mb-soundfont | fluid-soundfont-gm, xdg-utils")

include(CPack)
