# Reads CHANGELOG.md, so that what a release brings is written once: for people, for software centres (metainfo) and
# for package managers (Debian's changelog).
#
# A release is a heading "## VERSION - YEAR-MONTH-DAY" with a list below it. A heading of any other form, such as
# "## Unreleased", is skipped with its list.

# Sets <prefix>_versions, and for each of them <prefix>_<version>_date and <prefix>_<version>_entries.
function(read_changelog file prefix)
    file(READ "${file}" text)
    # Signs with a meaning in CMake's lists.
    string(REPLACE ";" "," text "${text}")
    string(REPLACE "[" "(" text "${text}")
    string(REPLACE "]" ")" text "${text}")
    string(REPLACE "`" "" text "${text}")
    # One line per entry.
    string(REGEX REPLACE "\n  +" " " text "${text}")
    string(REPLACE "\n" ";" lines "${text}")

    set(versions)
    set(version)
    foreach(line IN LISTS lines)
        if(line MATCHES "^## ([0-9][0-9.]*) - ([0-9]+-[0-9]+-[0-9]+)$")
            set(version "${CMAKE_MATCH_1}")
            list(APPEND versions "${version}")
            set(${prefix}_${version}_date "${CMAKE_MATCH_2}" PARENT_SCOPE)
            set(entries)
        elseif(line MATCHES "^## ")
            set(version)
        elseif(version AND line MATCHES "^- (.+)$")
            list(APPEND entries "${CMAKE_MATCH_1}")
            set(${prefix}_${version}_entries "${entries}" PARENT_SCOPE)
        endif()
    endforeach()
    set(${prefix}_versions "${versions}" PARENT_SCOPE)
endfunction()

# The <release> elements of the metainfo.
function(changelog_as_metainfo prefix result)
    set(text)
    foreach(version IN LISTS ${prefix}_versions)
        string(APPEND text "        <release version=\"${version}\" date=\"${${prefix}_${version}_date}\">\n"
            "            <description>\n                <ul>\n")
        foreach(entry IN LISTS ${prefix}_${version}_entries)
            string(REPLACE "&" "&amp;" entry "${entry}")
            string(REPLACE "<" "&lt;" entry "${entry}")
            string(APPEND text "                    <li>${entry}</li>\n")
        endforeach()
        string(APPEND text "                </ul>\n            </description>\n        </release>\n")
    endforeach()
    string(STRIP "${text}" text)
    set(${result} "${text}" PARENT_SCOPE)
endfunction()

# The text in lines of at most 78 columns, the first after "  * ", the others below its first word.
function(wrap_entry entry result)
    string(REPLACE " " ";" words "${entry}")
    set(text)
    set(line "  *")
    foreach(word IN LISTS words)
        string(LENGTH "${line} ${word}" length)
        if(length GREATER 78)
            string(APPEND text "${line}\n")
            set(line "   ")
        endif()
        string(APPEND line " ${word}")
    endforeach()
    set(${result} "${text}${line}\n" PARENT_SCOPE)
endfunction()

# Debian's changelog of a package, each version in its first revision.
function(changelog_as_debian prefix package maintainer result)
    set(text)
    foreach(version IN LISTS ${prefix}_versions)
        execute_process(
            COMMAND "${CMAKE_COMMAND}" -E env LC_ALL=C date --utc --rfc-email --date "${${prefix}_${version}_date}"
            OUTPUT_VARIABLE date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
        string(APPEND text "${package} (${version}-1) stable; urgency=medium\n\n")
        foreach(entry IN LISTS ${prefix}_${version}_entries)
            wrap_entry("${entry}" wrapped)
            string(APPEND text "${wrapped}")
        endforeach()
        string(APPEND text "\n -- ${maintainer}  ${date}\n\n")
    endforeach()
    string(STRIP "${text}" text)
    set(${result} "${text}\n" PARENT_SCOPE)
endfunction()
