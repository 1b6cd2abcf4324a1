# Runs when the program is installed, and knows only then where: strips it, if that is wanted, and links to it from
# among the commands. The link is relative, so that it is right under DESTDIR and after it, and leads from the folder
# that the commands are really in, since a link that names a way back counts from there.
cmake_path(ABSOLUTE_PATH CMAKE_INSTALL_PREFIX NORMALIZE OUTPUT_VARIABLE prefix)
foreach(name IN ITEMS private_folder commands_folder)
    cmake_path(ABSOLUTE_PATH ${name} BASE_DIRECTORY "${prefix}" NORMALIZE OUTPUT_VARIABLE final_${name})
    set(staged_${name} "$ENV{DESTDIR}${final_${name}}")
    file(MAKE_DIRECTORY "${staged_${name}}")
    file(REAL_PATH "${staged_${name}}" real_${name})
endforeach()

if(CMAKE_INSTALL_DO_STRIP)
    execute_process(
        COMMAND "${strip_program}" --remove-section=.comment --remove-section=.note "${real_private_folder}/Tarnwick"
        COMMAND_ERROR_IS_FATAL ANY)
endif()

file(RELATIVE_PATH target "${real_commands_folder}" "${real_private_folder}/Tarnwick")
set(link "${staged_commands_folder}/tarnwick-client")
message(STATUS "Linking: ${link}")
file(REMOVE "${link}")
file(CREATE_LINK "${target}" "${link}" SYMBOLIC)
list(APPEND CMAKE_INSTALL_MANIFEST_FILES "${final_commands_folder}/tarnwick-client")
