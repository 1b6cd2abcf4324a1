# Makes the client a bundle, Tarnwick.app. The program looks for its logo in the bundle's resources first.
# client/CMakeLists.txt includes this file and sets `logo` to the logo's path.
set(icon "${CMAKE_CURRENT_LIST_DIR}/../icons/tarnwick.icns")
target_sources(TarnwickClient PRIVATE "${logo}" "${icon}")
set_source_files_properties("${logo}" "${icon}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)

set_target_properties(TarnwickClient PROPERTIES
    MACOSX_BUNDLE ON
    MACOSX_BUNDLE_INFO_PLIST "${CMAKE_CURRENT_LIST_DIR}/Info.plist.in"
    MACOSX_BUNDLE_BUNDLE_NAME Tarnwick
    MACOSX_BUNDLE_GUI_IDENTIFIER com.example.tarnwick.client
    MACOSX_BUNDLE_SHORT_VERSION_STRING "${PROJECT_VERSION}"
    MACOSX_BUNDLE_BUNDLE_VERSION "${PROJECT_VERSION}"
    MACOSX_BUNDLE_ICON_FILE tarnwick.icns)
install(TARGETS TarnwickClient BUNDLE DESTINATION .)

# Copies Qt's libraries and plugins into the installed bundle.
if(COMMAND qt_generate_deploy_app_script)
    set(name_of_result OUTPUT_SCRIPT)
    if(Qt6_VERSION VERSION_LESS 6.5)
        set(name_of_result FILENAME_VARIABLE)
    endif()
    qt_generate_deploy_app_script(TARGET TarnwickClient ${name_of_result} deploy_script NO_UNSUPPORTED_PLATFORM_ERROR)
    install(SCRIPT "${deploy_script}")
endif()
