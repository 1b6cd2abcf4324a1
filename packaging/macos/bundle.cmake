# Makes the client a bundle, Tarnwick.app, with the logo among its resources, where the program looks for it first.
include("${CMAKE_CURRENT_LIST_DIR}/../icons/icons.cmake")

set(bundle_icon "${CMAKE_CURRENT_BINARY_DIR}/Tarnwick.icns")
make_icon("${bundle_icon}" icns)
target_sources(TarnwickClient PRIVATE "${client_logo}" "${bundle_icon}")
set_source_files_properties("${client_logo}" "${bundle_icon}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)

set_target_properties(TarnwickClient PROPERTIES
    MACOSX_BUNDLE ON
    OUTPUT_NAME Tarnwick
    MACOSX_BUNDLE_INFO_PLIST "${CMAKE_CURRENT_LIST_DIR}/Info.plist.in"
    MACOSX_BUNDLE_BUNDLE_NAME Tarnwick
    MACOSX_BUNDLE_GUI_IDENTIFIER "${TARNWICK_APP_ID}"
    MACOSX_BUNDLE_SHORT_VERSION_STRING "${TARNWICK_VERSION}"
    MACOSX_BUNDLE_BUNDLE_VERSION "${TARNWICK_VERSION}"
    MACOSX_BUNDLE_ICON_FILE Tarnwick.icns)
install(TARGETS TarnwickClient BUNDLE DESTINATION .)

# Brings Qt's libraries and plugins into the installed bundle.
if(COMMAND qt_generate_deploy_app_script)
    set(name_of_result OUTPUT_SCRIPT)
    if(Qt6_VERSION VERSION_LESS 6.5)
        set(name_of_result FILENAME_VARIABLE)
    endif()
    qt_generate_deploy_app_script(TARGET TarnwickClient ${name_of_result} deploy_script NO_UNSUPPORTED_PLATFORM_ERROR)
    install(SCRIPT "${deploy_script}")
endif()
