# Installs the program: the executable and the logo in a private folder, and a link to the executable among the
# commands. The executable finds the logo beside itself, however it was started, since Qt follows the link.
set(private_folder "${CMAKE_INSTALL_LIBEXECDIR}/tarnwick-client")
set(private_name Tarnwick)

# install(TARGETS) cannot give a file another name.
install(PROGRAMS "$<TARGET_FILE:TarnwickClient>" DESTINATION "${private_folder}" RENAME "${private_name}")
install(FILES "${client_logo}" DESTINATION "${private_folder}")
string(CONFIGURE [[
    if(CMAKE_INSTALL_DO_STRIP)
        set(program "@private_folder@/@private_name@")
        cmake_path(ABSOLUTE_PATH program BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
        execute_process(
            COMMAND "@CMAKE_STRIP@" --remove-section=.comment --remove-section=.note "$ENV{DESTDIR}${program}"
            COMMAND_ERROR_IS_FATAL ANY)
    endif()
]] strip_program @ONLY)
install(CODE "${strip_program}")

# A relative link stays right under DESTDIR and under another prefix.
file(RELATIVE_PATH link_target
    "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBEXECDIR}/tarnwick-client/${private_name}")
set(link "${CMAKE_CURRENT_BINARY_DIR}/installed-link/tarnwick-client")
file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/installed-link")
file(CREATE_LINK "${link_target}" "${link}" SYMBOLIC)
install(FILES "${link}" DESTINATION "${CMAKE_INSTALL_BINDIR}")
