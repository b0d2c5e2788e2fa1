# Builds for 64-bit Windows on another system. scripts/build-windows-libraries has made the libraries.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(triple x86_64-w64-mingw32)
# The "posix" compiler: only its run-time library has std::thread.
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)

execute_process(
  COMMAND "${CMAKE_CURRENT_LIST_DIR}/../scripts/build-windows-libraries" --where
  OUTPUT_VARIABLE KX_WINDOWS_LIBRARIES
  OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
if(NOT EXISTS "${KX_WINDOWS_LIBRARIES}")
  message(FATAL_ERROR "The libraries for Windows are missing: run scripts/build-windows-libraries")
endif()
set(CMAKE_FIND_ROOT_PATH "${KX_WINDOWS_LIBRARIES}" /usr/${triple})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${KX_WINDOWS_LIBRARIES}/lib/pkgconfig")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/under-wine")
