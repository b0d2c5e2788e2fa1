# kx_embed(TARGET <target> NAMESPACE <a::b> FILES <name> <file> ...): compiles files into the target, each as
# `extern const std::string_view <name>` of the namespace; a header of the target's own declares them.
function(kx_embed)
  cmake_parse_arguments(EMBED "" "TARGET;NAMESPACE" "FILES" ${ARGN})
  set(code "#include <array>\n#include <string_view>\n\nnamespace ${EMBED_NAMESPACE} {\n")
  while(EMBED_FILES)
    list(POP_FRONT EMBED_FILES name file)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    file(READ "${file}" bytes HEX)
    string(LENGTH "${bytes}" length)
    math(EXPR length "${length} / 2")
    string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
    string(APPEND code "static constexpr std::array<char, ${length}> ${name}Bytes{${bytes}};\n"
                       "extern const std::string_view ${name}{${name}Bytes.data(), ${name}Bytes.size()};\n")
  endwhile()
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${EMBED_TARGET}-files.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "${code}}\n" @ONLY)
  target_sources(${EMBED_TARGET} PRIVATE "${source}")
endfunction()
