# kx_room(NAME <room> [KIND OBJECT|STATIC] [TARGET <target>] SOURCES <files> [USES <rooms>] [LINKS <targets>])
#
# One folder, one target, one sentence of docs/architecture.md. USES names every room whose headers this room may
# include; the includes are read here, so that an arrow in the wrong direction stops the configuration.
# The rooms text, platform and host are linked into one shared library, kxcore, so that the program and every plug-in
# share one copy of the services, the exceptions and the classes of the host contract.
set(KX_CORE_ROOMS text platform host)

function(kx_check_includes room uses)
  foreach(file IN LISTS ARGN)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    file(STRINGS "${file}" includes REGEX "^#include \"[a-z]+/")
    foreach(line IN LISTS includes)
      string(REGEX REPLACE "^#include \"([a-z]+)/.*" "\\1" used "${line}")
      if(NOT used STREQUAL room AND NOT used IN_LIST uses)
        message(FATAL_ERROR "${file}: ${line}\nThe room '${room}' may include only: ${room};${uses}")
      endif()
    endforeach()
  endforeach()
endfunction()

function(kx_room)
  cmake_parse_arguments(ROOM "" "NAME;KIND;TARGET" "SOURCES;USES;LINKS" ${ARGN})
  if(NOT ROOM_KIND)
    set(ROOM_KIND STATIC)
  endif()
  if(NOT ROOM_TARGET)
    set(ROOM_TARGET kx_${ROOM_NAME})
  endif()

  file(GLOB files CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.h" "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp")
  kx_check_includes("${ROOM_NAME}" "${ROOM_USES}" ${files})

  add_library(${ROOM_TARGET} ${ROOM_KIND} ${ROOM_SOURCES})
  target_include_directories(${ROOM_TARGET} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${ROOM_TARGET} PRIVATE kx_warnings PUBLIC ${ROOM_LINKS})
  set(core OFF)
  foreach(used IN LISTS ROOM_USES)
    if(used IN_LIST KX_CORE_ROOMS)
      set(core ON)
    else()
      target_link_libraries(${ROOM_TARGET} PUBLIC kx_${used})
    endif()
  endforeach()
  if(core AND NOT ROOM_KIND STREQUAL OBJECT)
    target_link_libraries(${ROOM_TARGET} PUBLIC kxcore)
  endif()
endfunction()
