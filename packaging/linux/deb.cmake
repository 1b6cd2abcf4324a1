# The Debian package: cpack makes it from what `cmake --install` installs. Three scripts make it the same for everyone
# who makes it from the same commit; they run when the package is made, not when the build is configured.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tarnwick-client)
set(CPACK_PACKAGE_VERSION "${TARNWICK_VERSION}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Such a place would be this machine's own, not the package's.
set(CPACK_ERROR_ON_ABSOLUTE_INSTALL_DESTINATION ON)
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_PROJECT_CONFIG_FILE "${CMAKE_CURRENT_LIST_DIR}/source_date.cmake")
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/stage.cmake")
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/repack.cmake")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${TARNWICK_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://${TARNWICK_PUBLIC_HOST}/")
set(CPACK_DEBIAN_PACKAGE_SECTION net)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Certificates for https, a font for the projects' emoji badges, what opens the web browser, and Wayland.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ca-certificates, fonts-noto-color-emoji, qt6-wayland, xdg-utils")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "desktop client for the Tarnwick hosting service")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Tarnwick hosts private game servers, called GDPS, for its users. This client
pairs the desktop with a Tarnwick account by a one-time code that is approved
in the web browser, lists the account's projects and opens their pages, and
creates new projects from a form.")

# What the scripts need to know.
set(CPACK_TARNWICK_SOURCE_DIR "${CMAKE_SOURCE_DIR}")
set(CPACK_TARNWICK_NEWEST_VERSION "${newest_version}")
set(CPACK_TARNWICK_NEWEST_DATE "${newest_date}")
include(CPack)
