# Has Debian's own tool write the archive once more: cpack's bears the owner and the umask of whoever made it.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(content "${CPACK_TEMPORARY_DIRECTORY}-repacked")
    file(REMOVE_RECURSE "${content}")
    foreach(command IN ITEMS
            "dpkg-deb;--raw-extract;${package};${content}"
            "chmod;755;${content};${content}/DEBIAN"
            "dpkg-deb;--root-owner-group;-Zxz;--build;${content};${package}")
        execute_process(COMMAND ${command} OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
endforeach()
