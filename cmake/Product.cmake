# What the product is called and which version it has. Said here, read by everything that needs it.
include_guard(GLOBAL)

set(TARNWICK_VERSION 1.0.0)
# One identifier for the desktop entry, the metainfo, the icons and the macOS bundle. It lies in a domain that is kept
# free for examples, under a top-level domain that exists: validators take no other.
set(TARNWICK_APP_ID com.example.tarnwick.client)

# The oldest macOS that the client is built for: Qt 6.5's own limit. It has to be known before project().
if(CMAKE_HOST_APPLE AND NOT DEFINED CMAKE_OSX_DEPLOYMENT_TARGET AND NOT DEFINED ENV{MACOSX_DEPLOYMENT_TARGET})
    set(CMAKE_OSX_DEPLOYMENT_TARGET 11.0 CACHE STRING "Oldest macOS that the client runs on")
endif()
