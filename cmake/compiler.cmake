# Warnings, hardening and sanitizers, the same for every target.

find_program(ccache_program ccache)
if(ccache_program)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${ccache_program})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  add_compile_options(-Wno-restrict)  # false alarms on "text" + std::string when optimizing (GCC bug 105651)
endif()
include_directories(${CMAKE_SOURCE_DIR})
# __FILE__ and debug information must not carry the place of the checkout: builds are reproducible.
add_compile_options(-ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)

# Calls of a few instructions run through several libraries for every frame; optimizing the program as a whole
# makes a quarter of the instructions per frame go away, and a third of the program's size.
set(CMAKE_POLICY_DEFAULT_CMP0069 NEW)  # Debian's googletest is older than the policy
if(NOT WIN32)
  set(CMAKE_INTERPROCEDURAL_OPTIMIZATION_RELEASE ON)
endif()

if(WIN32)
  # Windows XP is the oldest system we run on; the whole run time is linked in.
  add_compile_definitions(_WIN32_WINNT=0x0501 WINVER=0x0501 WIN32_LEAN_AND_MEAN NOMINMAX)
  add_compile_options(-ffunction-sections -fdata-sections -fstack-protector-strong)
  add_link_options(-static -Wl,--gc-sections -Wl,--no-insert-timestamp
                   -Wl,--nxcompat -Wl,--dynamicbase -fstack-protector-strong)
endif()

if(WRENLOW_SANITIZE)
  add_compile_options(-fsanitize=${WRENLOW_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${WRENLOW_SANITIZE})
endif()

if(WRENLOW_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -O1)
  add_link_options(-fsanitize=address,undefined)
endif()
