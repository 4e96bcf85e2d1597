# How our own code is compiled. All settings apply to this directory tree only, so that a project
# that adds the library with add_subdirectory() keeps its own.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(PROJECT_IS_TOP_LEVEL)
  set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
  if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE Release CACHE STRING "Kind of build" FORCE)
  endif()
endif()

# Replacing single functions of the library at load time is not supported, so that calls within it
# can be inlined.
add_compile_options(-fno-semantic-interposition)

if(NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  find_program(ZEB_CCACHE ccache)
  mark_as_advanced(ZEB_CCACHE)
  if(ZEB_CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${ZEB_CCACHE}")
  endif()
endif()

if(ZEB_SANITIZE)
  list(JOIN ZEB_SANITIZE "," sanitizers)
  add_compile_options(-fsanitize=${sanitizers} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${sanitizers})
endif()
if(ZEB_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "ZEB_BUILD_FUZZERS needs clang; configure with \"cmake --preset fuzz\".")
  endif()
  # The library reports its coverage to the fuzzer; only the fuzz programs link libFuzzer's main.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# zeb_warnings(<target>): the warnings that our own code must not cause.
function(zeb_warnings target)
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion
    $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety>
    $<$<BOOL:${ZEB_WERROR}>:-Werror>)
endfunction()
