# Settles the one date that the package bears everywhere: SOURCE_DATE_EPOCH if it is set, else that of the last
# commit, else, outside of a repository, that of the newest release.
if("$ENV{SOURCE_DATE_EPOCH}" STREQUAL "")
    # A repository that these sources merely lie in is not theirs.
    cmake_path(GET CPACK_TARNWICK_SOURCE_DIR PARENT_PATH ceiling)
    execute_process(
        COMMAND "${CMAKE_COMMAND}" -E env "GIT_CEILING_DIRECTORIES=${ceiling}"
            git -c safe.directory=* -C "${CPACK_TARNWICK_SOURCE_DIR}" log -1 --format=%ct
        OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
    if(NOT date)
        execute_process(
            COMMAND date --utc --date "${CPACK_TARNWICK_NEWEST_DATE}" +%s
            OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    endif()
    set(ENV{SOURCE_DATE_EPOCH} "${date}")
endif()
