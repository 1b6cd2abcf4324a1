# Installs what makes a program at home on a Linux desktop: entry, metainfo, icons, manual page, copyright, changelog.
include(GNUInstallDirs)
include("${CMAKE_CURRENT_LIST_DIR}/../changelog.cmake")
include("${CMAKE_CURRENT_LIST_DIR}/../icons/icons.cmake")

# Empty unless they are set, so that they follow the host when it changes.
set(TARNWICK_PICTURES_URL "" CACHE STRING "Where the pictures are published that the metainfo names")
set(TARNWICK_MAINTAINER "" CACHE STRING "Who answers for the package: NAME <ADDRESS>")
if(NOT TARNWICK_PICTURES_URL)
    set(TARNWICK_PICTURES_URL "https://${TARNWICK_PUBLIC_HOST}/desktop-client/docs/pictures")
endif()
if(NOT TARNWICK_MAINTAINER)
    set(TARNWICK_MAINTAINER "The Tarnwick client developers <desktop-client@${TARNWICK_PUBLIC_HOST}>")
endif()

# The changelog is one of the sources of the files below.
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS
    "${CMAKE_SOURCE_DIR}/CHANGELOG.md" "${CMAKE_SOURCE_DIR}/LICENSE")
read_changelog("${CMAKE_SOURCE_DIR}/CHANGELOG.md" changelog)
list(GET changelog_versions 0 newest_version)
set(newest_date "${changelog_${newest_version}_date}")
changelog_as_metainfo(changelog metainfo_releases)
changelog_as_debian(changelog tarnwick-client "${TARNWICK_MAINTAINER}" debian_changelog)

# The license as a field of Debian's copyright format: lines begin with a space, empty ones are a dot.
file(READ "${CMAKE_SOURCE_DIR}/LICENSE" license)
string(REGEX MATCH "Copyright \\(c\\) ([^\n]+)\n\n(.+)" license_parts "${license}")
set(copyright_holder "${CMAKE_MATCH_1}")
string(STRIP "${CMAKE_MATCH_2}" license_text)
string(REPLACE "\n\n" "\n.\n" license_text "${license_text}")
string(REPLACE "\n" "\n " license_text " ${license_text}")

set(made "${CMAKE_CURRENT_BINARY_DIR}/linux")
set(sources "${CMAKE_CURRENT_LIST_DIR}")
configure_file("${sources}/tarnwick-client.desktop.in" "${made}/${TARNWICK_APP_ID}.desktop" @ONLY)
configure_file("${sources}/tarnwick-client.metainfo.xml.in" "${made}/${TARNWICK_APP_ID}.metainfo.xml" @ONLY)
configure_file("${sources}/tarnwick-client.1.in" "${made}/tarnwick-client.1" @ONLY)
configure_file("${sources}/copyright.in" "${made}/copyright" @ONLY)
file(CONFIGURE OUTPUT "${made}/changelog.Debian" CONTENT "@debian_changelog@" @ONLY)

install(FILES "${made}/${TARNWICK_APP_ID}.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES "${made}/${TARNWICK_APP_ID}.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")
install(FILES "${made}/tarnwick-client.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")

# The documents are named after the package, not after the CMake project, unless the user named a folder.
if("$CACHE{CMAKE_INSTALL_DOCDIR}" STREQUAL "")
    set(CMAKE_INSTALL_DOCDIR "${CMAKE_INSTALL_DATAROOTDIR}/doc/tarnwick-client")
endif()
install(FILES "${made}/copyright" "${made}/changelog.Debian" DESTINATION "${CMAKE_INSTALL_DOCDIR}")

set(icon_theme "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
set(icons)
foreach(size IN ITEMS 16 22 24 32 48 64 128 256 512)
    set(icon "${made}/icons/${size}x${size}.png")
    make_icon("${icon}" png ${size})
    list(APPEND icons "${icon}")
    install(FILES "${icon}" DESTINATION "${icon_theme}/${size}x${size}/apps" RENAME "${TARNWICK_APP_ID}.png")
endforeach()
file(MAKE_DIRECTORY "${made}/icons")
add_custom_target(desktop_icons ALL DEPENDS ${icons})
install(FILES "${CMAKE_SOURCE_DIR}/tarnwick/static/tarnwick-logo.svg" DESTINATION "${icon_theme}/scalable/apps"
    RENAME "${TARNWICK_APP_ID}.svg")
