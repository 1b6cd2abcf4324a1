# Units for the checkers of tools/lint: the named sources put together as one file, so that the headers, by far most of
# what a checker reads, are read once and not once a file. Nothing of them is ever built but what Qt's compiler makes.
include_guard(GLOBAL)

# add_lint_unit(NAME SOURCES file... [LIBRARIES target...] [DEFINITIONS definition...])
function(add_lint_unit name)
    cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LIBRARIES;DEFINITIONS")
    add_library(${name}_lint OBJECT EXCLUDE_FROM_ALL ${arg_SOURCES})
    set_target_properties(${name}_lint PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 0)
    target_link_libraries(${name}_lint PRIVATE ${arg_LIBRARIES})
    target_compile_definitions(${name}_lint PRIVATE ${arg_DEFINITIONS})
endfunction()

# The same for test programs, each of which has an entry of its own: add_test_lint_unit(as above)
function(add_test_lint_unit name)
    add_lint_unit(${name} ${ARGN})
    string(JOIN "\n" one_entry_each
        "#include <QtTest>"
        "#undef main"
        "#define main THIS_FILE"
        "#undef LLVMFuzzerTestOneInput"
        "#define LLVMFuzzerTestOneInput THIS_FILE")
    set_target_properties(${name}_lint PROPERTIES
        UNITY_BUILD_UNIQUE_ID THIS_FILE UNITY_BUILD_CODE_BEFORE_INCLUDE "${one_entry_each}")
    target_link_libraries(${name}_lint PRIVATE Qt6::Test)
endfunction()

# Building this makes the headers that the checkers need beyond those of the tree.
add_custom_target(lint_headers)
