# Otherwise Qt looks for macOS's OpenGL framework.
if(NOT TARGET WrapOpenGL::WrapOpenGL)
    add_library(WrapOpenGL::WrapOpenGL INTERFACE IMPORTED GLOBAL)
endif()
