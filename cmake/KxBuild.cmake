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
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH "$ORIGIN")

find_program(KX_CCACHE ccache)
if(KX_CCACHE)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${KX_CCACHE}")
endif()

add_library(kx_warnings INTERFACE)
if(MSVC)
  target_compile_options(kx_warnings INTERFACE /W4 /WX /utf-8 /permissive-)
else()
  target_compile_options(kx_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
  # With -O3, g++ 12 finds overlapping copies where a literal and a temporary string are joined, and alternatives of a
  # variant that were never set; there are none.
  target_compile_options(kx_warnings INTERFACE
    "$<$<AND:$<CXX_COMPILER_ID:GNU>,$<CONFIG:Release>>:-Wno-restrict;-Wno-maybe-uninitialized>")
endif()

if(KX_SANITIZE)
  # What the sanitizers add hides from g++ 12 where a value is set.
  target_compile_options(kx_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
