# Installs the program: the executable and the logo in a private folder, and a link to the executable among the
# commands. The executable finds the logo beside itself, however it was started, since Qt follows the link.
set(private_folder "${CMAKE_INSTALL_LIBEXECDIR}/tarnwick-client")

# install(TARGETS) cannot give a file another name.
install(PROGRAMS "$<TARGET_FILE:TarnwickClient>" DESTINATION "${private_folder}" RENAME Tarnwick)
install(FILES "${client_logo}" DESTINATION "${private_folder}")
string(CONFIGURE [[
    set(private_folder "@private_folder@")
    set(commands_folder "@CMAKE_INSTALL_BINDIR@")
    set(strip_program "@CMAKE_STRIP@")
]] installed_names @ONLY)
install(CODE "${installed_names}")
install(SCRIPT "${CMAKE_CURRENT_LIST_DIR}/finish_program.cmake")
