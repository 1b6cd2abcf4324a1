# Settings that must come before project(), for the whole tree and for the client built separately.
include_guard(GLOBAL)

set(TARNWICK_VERSION 1.0.0)

# The oldest macOS that Qt 6.5 supports.
set(CMAKE_OSX_DEPLOYMENT_TARGET 11.0 CACHE STRING "Oldest macOS that the client runs on")
