# A toolchain file: builds by CMake's own rules for macOS, with this system's compiler, libraries and linker in the
# places of Apple's. What comes out runs here, but has the files and folders that it would have on a Mac.
set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_CXX_COMPILER_WORKS ON)
set(CMAKE_CXX_FLAGS_INIT -Wno-unused-command-line-argument)
set(CMAKE_CXX_LINK_EXECUTABLE "<CMAKE_CXX_COMPILER> <OBJECTS> -o <TARGET> <LINK_LIBRARIES>")
set(CMAKE_PROJECT_INCLUDE "${CMAKE_CURRENT_LIST_DIR}/no_opengl.cmake")

# Programs of the build can be run as they are.
set(CMAKE_CROSSCOMPILING_EMULATOR env)
# The rules would only look where a Mac keeps its packages.
execute_process(COMMAND clang++ -print-multiarch OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE)
set(CMAKE_PREFIX_PATH "/usr/lib/${folder}/cmake")
set(CMAKE_OSX_DEPLOYMENT_TARGET 11.0)
