# make_icon(FILE WORDS...) makes one icon from the emblem: make_icon(x.png png 16), make_icon(x.icns icns).
include_guard(GLOBAL)
include("${CMAKE_CURRENT_LIST_DIR}/../../cmake/LintUnits.cmake")
find_package(Qt6 6.4 REQUIRED COMPONENTS Core Gui)

add_executable(icon_maker "${CMAKE_CURRENT_LIST_DIR}/icon_maker.cpp" "${CMAKE_CURRENT_LIST_DIR}/icns_file.cpp")
target_link_libraries(icon_maker PRIVATE tarnwick_flags Qt6::Core Qt6::Gui)
add_lint_unit(icon_maker
    SOURCES "${CMAKE_CURRENT_LIST_DIR}/icon_maker.cpp" "${CMAKE_CURRENT_LIST_DIR}/icns_file.cpp"
    LIBRARIES tarnwick_flags Qt6::Core Qt6::Gui)

function(make_icon file)
    set(image "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/tarnwick-icon.png")
    add_custom_command(
        OUTPUT "${file}"
        COMMAND icon_maker "${image}" ${ARGN} "${file}"
        DEPENDS icon_maker "${image}"
        COMMENT "Making ${file}"
        VERBATIM)
endfunction()
