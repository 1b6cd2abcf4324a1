# Has Debian's own tool write the archive once more: cpack's bears the owner and the umask of whoever made it, and a size
# that depends on their file system.

# In kilobytes, as Debian counts: each file's own size rounded up, and one for everything else.
function(installed_size content result)
    file(GLOB_RECURSE entries LIST_DIRECTORIES true RELATIVE "${content}" "${content}/*")
    list(FILTER entries EXCLUDE REGEX "^DEBIAN(/|$)")
    set(size 0)
    foreach(entry IN LISTS entries)
        set(bytes 1)
        if(NOT IS_DIRECTORY "${content}/${entry}" AND NOT IS_SYMLINK "${content}/${entry}")
            file(SIZE "${content}/${entry}" bytes)
        endif()
        math(EXPR size "${size} + (${bytes} + 1023) / 1024")
    endforeach()
    set(${result} "${size}" PARENT_SCOPE)
endfunction()

foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(content "${CPACK_TEMPORARY_DIRECTORY}-repacked")
    file(REMOVE_RECURSE "${content}")
    execute_process(
        COMMAND dpkg-deb --raw-extract "${package}" "${content}" OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

    installed_size("${content}" size)
    file(READ "${content}/DEBIAN/control" control)
    string(REGEX REPLACE "(\nInstalled-Size:)[^\n]*" "\\1 ${size}" control "${control}")
    file(WRITE "${content}/DEBIAN/control" "${control}")

    execute_process(COMMAND chmod 755 "${content}" "${content}/DEBIAN" COMMAND_ERROR_IS_FATAL ANY)
    execute_process(
        COMMAND dpkg-deb --root-owner-group -Zxz --build "${content}" "${package}"
        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
endforeach()
