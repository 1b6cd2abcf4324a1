# Writes a C++ source file that holds the bytes of the given files.
#   cmake -DSOURCE_DIR=... -DFILES=a;b -DOUTPUT=... -P embed_assets.cmake
set(arrays "")
set(lookups "")
set(number 0)
foreach(file IN LISTS FILES)
    file(READ "${SOURCE_DIR}/${file}" hex HEX)
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "0x\\1," bytes "${hex}")
    string(APPEND arrays "constexpr unsigned char bytes${number}[] = {${bytes}};\n")
    string(APPEND lookups "    if (name == \"${file}\") {\n        return view(bytes${number});\n    }\n")
    math(EXPR number "${number} + 1")
endforeach()

file(WRITE "${OUTPUT}" "#include \"assets.h\"

#include <cstddef>

namespace tarnwick {

namespace {

${arrays}
template <std::size_t size>
std::string_view view(const unsigned char (&bytes)[size])
{
    return {reinterpret_cast<const char*>(bytes), size};
}

} // namespace

std::string_view asset(std::string_view name)
{
${lookups}    return {};
}

} // namespace tarnwick
")
