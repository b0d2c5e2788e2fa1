# What every target is compiled with, and where the results go.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

# The program finds its plug-in, its launcher and its logger beside itself, wherever the folder is put.
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_INSTALL_RPATH "$ORIGIN")
# In the build tree too: CMake fills a path of its own up with empty entries, which are the current folder.
set(CMAKE_BUILD_WITH_INSTALL_RPATH ON)

find_program(KX_CCACHE ccache)
if(KX_CCACHE)
  # Without these a source that takes over precompiled headers is never found in the cache.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime "${KX_CCACHE}")
endif()

add_library(kx_warnings INTERFACE)
if(MSVC)
  target_compile_options(kx_warnings INTERFACE /W4 /WX /utf-8 /permissive-)
else()
  target_compile_options(kx_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
  # When it optimises, g++ 12 finds overlapping copies where a literal and a temporary string are joined, copies beyond the
  # room that a short string has in itself, and alternatives of a variant that were never set; there are none. What the
  # sanitizers add misleads it in the same way.
  set(untrue -Wno-restrict -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread -Wno-maybe-uninitialized)
  target_compile_options(kx_warnings INTERFACE
    "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<OR:$<BOOL:${KX_SANITIZE}>,$<NOT:$<CONFIG:Debug>>>>:${untrue}>")
endif()

if(WIN32) # Windows 10 and later; the same for all, as they share precompiled headers
  add_compile_definitions(_WIN32_WINNT=0x0A00)
endif()

if(KX_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# Everything is built with the coverage that the fuzzer steers by, so that it sees its way through the libraries.
if(KX_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    message(FATAL_ERROR "KX_FUZZ needs clang, which brings libFuzzer")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=fuzzer-no-link,address,undefined)
endif()
