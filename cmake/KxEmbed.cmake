# Files that are compiled in.

# kx_bytes(<file> <name> <result>): code that defines the file's bytes as a std::string_view of this name.
function(kx_bytes file name result)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
  file(READ "${file}" bytes HEX)
  string(LENGTH "${bytes}" length)
  math(EXPR length "${length} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${bytes}")
  string(CONCAT code "static constexpr std::array<char, ${length}> ${name}Bytes{${bytes}};\n"
                     "extern const std::string_view ${name}{${name}Bytes.data(), ${name}Bytes.size()};\n")
  set(${result} "${code}" PARENT_SCOPE)
endfunction()

function(kx_add_generated target name code)
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${target}-${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "${code}" @ONLY)
  target_sources(${target} PRIVATE "${source}")
endfunction()

# kx_embed(TARGET <target> NAMESPACE <a::b> FILES <name> <file> ...): each file as `extern const std::string_view <name>` of the
# namespace; a header of the target's own declares them.
function(kx_embed)
  cmake_parse_arguments(EMBED "" "TARGET;NAMESPACE" "FILES" ${ARGN})
  set(code "#include <array>\n#include <string_view>\n\nnamespace ${EMBED_NAMESPACE} {\n")
  while(EMBED_FILES)
    list(POP_FRONT EMBED_FILES name file)
    kx_bytes("${file}" ${name} definition)
    string(APPEND code "${definition}")
  endwhile()
  kx_add_generated(${EMBED_TARGET} files "${code}}\n")
endfunction()

# kx_embed_folder(TARGET <target> HEADER <header> NAMESPACE <a::b> FOLDER <folder> [FILES <files>]): all files of a folder, and
# these, as `const std::span<const TAsset> Assets`, which the header declares.
function(kx_embed_folder)
  cmake_parse_arguments(EMBED "" "TARGET;HEADER;NAMESPACE;FOLDER" "FILES" ${ARGN})
  file(GLOB files CONFIGURE_DEPENDS "${EMBED_FOLDER}/*")
  set(code "#include \"${EMBED_HEADER}\"\n\n#include <array>\n\nnamespace ${EMBED_NAMESPACE} {\n")
  set(rows "")
  foreach(file IN LISTS files EMBED_FILES)
    get_filename_component(name "${file}" NAME)
    string(MAKE_C_IDENTIFIER "${name}" identifier)
    kx_bytes("${file}" ${identifier} definition)
    string(APPEND code "${definition}")
    string(APPEND rows "  TAsset{\"${name}\", ${identifier}},\n")
  endforeach()
  kx_add_generated(${EMBED_TARGET} folder
    "${code}static const std::array rows{\n${rows}};\nconst std::span<const TAsset> Assets(rows);\n}\n")
endfunction()
