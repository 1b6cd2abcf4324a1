# The target tarnwick_flags has all compiler flags of the project. Every other target links to it.
include_guard(GLOBAL)

option(TARNWICK_WERROR "Treat compiler warnings as errors" OFF)
option(TARNWICK_SANITIZE "Build with the address and undefined-behaviour sanitizers" OFF)
option(TARNWICK_FUZZ "Build with Clang's libFuzzer, for the fuzz targets" OFF)

add_library(tarnwick_flags INTERFACE)
target_compile_features(tarnwick_flags INTERFACE cxx_std_20)

# Qt's strict mode: no silent conversions between bytes, text and URLs, no lower-case macros, nothing deprecated.
target_compile_definitions(tarnwick_flags INTERFACE
    QT_NO_CAST_FROM_ASCII
    QT_NO_CAST_TO_ASCII
    QT_NO_CAST_FROM_BYTEARRAY
    QT_NO_URL_CAST_FROM_STRING
    QT_NO_KEYWORDS
    QT_NO_FOREACH
    QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
    QT_NO_JAVA_STYLE_ITERATORS
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)

if(MSVC)
    target_compile_options(tarnwick_flags INTERFACE /W4 /utf-8 /permissive-)
    target_compile_definitions(tarnwick_flags INTERFACE _CRT_SECURE_NO_WARNINGS) # allows getenv
else()
    target_compile_options(tarnwick_flags INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
        -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2 -Wimplicit-fallthrough)
endif()

if(TARNWICK_WERROR)
    target_compile_options(tarnwick_flags INTERFACE $<IF:$<CXX_COMPILER_ID:MSVC>,/WX,-Werror>)
endif()

if(TARNWICK_SANITIZE)
    target_compile_options(tarnwick_flags INTERFACE
        -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(tarnwick_flags INTERFACE -fsanitize=address,undefined)
endif()
if(TARNWICK_FUZZ)
    target_compile_options(tarnwick_flags INTERFACE -fsanitize=fuzzer-no-link)
endif()
