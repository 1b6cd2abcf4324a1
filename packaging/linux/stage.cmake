# Brings the installed files into the form that Debian's packages have: documents are compressed, and nothing tells
# when or under which umask it was built.
if(NOT CPACK_PACKAGE_VERSION STREQUAL CPACK_TARNWICK_NEWEST_VERSION)
    message(FATAL_ERROR "This is ${CPACK_PACKAGE_VERSION}, but the newest release in CHANGELOG.md is "
        "${CPACK_TARNWICK_NEWEST_VERSION}")
endif()

function(run)
    execute_process(COMMAND ${ARGN} WORKING_DIRECTORY "${CPACK_TEMPORARY_DIRECTORY}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

run(find usr/share/man usr/share/doc -type f -not -name copyright -exec gzip --best --no-name {} +)
run(find usr -type d -exec chmod 755 {} +)
run(find . -exec touch --no-dereference --date "@$ENV{SOURCE_DATE_EPOCH}" {} +)
