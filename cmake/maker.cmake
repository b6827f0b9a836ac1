# Who makes this build. All may stay empty; the texts go into the program as they are (ANSI code page).
set(WRENLOW_AUTHOR "" CACHE STRING "Author's name, for the about box")
set(WRENLOW_HOME_PAGE "" CACHE STRING "Address of the home page, beginning with http:// or https://")
set(WRENLOW_FORUM_PAGE "" CACHE STRING "Address of the forum, beginning with http:// or https://")

configure_file(base/Maker.h.in ${CMAKE_BINARY_DIR}/generated/base/Maker.h @ONLY)
include_directories(${CMAKE_BINARY_DIR}/generated)
