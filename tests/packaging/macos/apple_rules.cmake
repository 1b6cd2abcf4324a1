# A toolchain file: CMake's rules for macOS, but with this system's Clang, libraries and linker. The result runs here and
# has the files and folders of a bundle on a Mac.
set(CMAKE_SYSTEM_NAME Darwin)
# CMake needs it for more than one architecture.
set(CMAKE_OSX_SYSROOT /)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_WORKS ON)
set(CMAKE_CXX_FLAGS_INIT -Wno-unused-command-line-argument)
set(CMAKE_CXX_LINK_EXECUTABLE "<CMAKE_CXX_COMPILER> <OBJECTS> -o <TARGET> <LINK_LIBRARIES>")

# The built programs run on this system.
set(CMAKE_CROSSCOMPILING_EMULATOR env)
# The rules for macOS would not look here.
execute_process(COMMAND clang++ -print-multiarch OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_PREFIX_PATH "/usr/lib/${folder}/cmake")
# Otherwise Qt looks for macOS's OpenGL framework.
set(CMAKE_PROJECT_INCLUDE "${CMAKE_CURRENT_LIST_DIR}/no_opengl.cmake")
