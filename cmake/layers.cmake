# Builds with sanitizers are made most often, so what nearly every source includes is read once for them. The other builds
# go without: there a source that forgets one of these is seen.
if(WRENLOW_SANITIZE OR WRENLOW_FUZZ)
  add_library(common_headers OBJECT cmake/common_headers.cpp)
  target_precompile_headers(common_headers PRIVATE <algorithm> <cstdint> <functional> <map> <memory> <optional> <span>
                            <string> <string_view> <utility> <vector>)
endif()

# layer(NAME SOURCES... [USES LIBRARY...]): one static library per layer, sources listed by hand.
# USES names the layers below it; the os_* implementation is left to the program that links.
# A layer of headers only becomes an interface library.
function(layer name)
  cmake_parse_arguments(arg "" "" "USES" ${ARGN})
  if(arg_UNPARSED_ARGUMENTS)
    add_library(${name} STATIC ${arg_UNPARSED_ARGUMENTS})
    target_link_libraries(${name} PUBLIC ${arg_USES})
    if(TARGET common_headers)
      target_precompile_headers(${name} REUSE_FROM common_headers)
    endif()
  else()
    add_library(${name} INTERFACE)
    target_link_libraries(${name} INTERFACE ${arg_USES})
  endif()
endfunction()

# fast(NAME...): layers that every frame passes through. Where the program is built to be small they are built to be
# fast, which costs it 35 KB.
function(fast)
  foreach(name IN LISTS ARGN)
    target_compile_options(${name} PRIVATE $<$<CONFIG:MinSizeRel>:-O2>)
  endforeach()
endfunction()
