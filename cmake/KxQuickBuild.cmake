# What makes a build quick: headers that most sources include are parsed once, and sources that share a library of costly
# templates are compiled together. Sources include what they use all the same: clang-tidy and the build for Visual Studio
# take each as it stands.
option(KX_QUICK_BUILD "Precompile common headers, compile some sources together" ON)

set(KX_COMMON_HEADERS <algorithm> <array> <chrono> <cstdint> <functional> <map> <memory> <optional> <set> <span> <string>
                      <string_view> <unordered_map> <utility> <variant> <vector>)

# kx_precompile(<kind> <target> <headers>): the first target of a kind precompiles the headers, those after it take them over.
# Within a kind the flags that change what a header means have to agree.
function(kx_precompile kind target)
  if(NOT KX_QUICK_BUILD)
    return()
  endif()
  get_property(first GLOBAL PROPERTY KX_PRECOMPILED_${kind})
  if(first)
    target_precompile_headers(${target} REUSE_FROM ${first})
  else()
    set_property(GLOBAL PROPERTY KX_PRECOMPILED_${kind} ${target})
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()

# kx_compile_together(<target> <sources>): as one source.
function(kx_compile_together target)
  if(KX_QUICK_BUILD)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_MODE GROUP)
    set_source_files_properties(${ARGN} PROPERTIES UNITY_GROUP ${ARGV1})
  endif()
endfunction()
