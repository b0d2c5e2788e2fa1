# What users get: a zip for Windows, a Debian package elsewhere (target kx_pack, result in out/). In both everything
# that belongs to the program lies beside it.
if(WIN32)
  set(folder .)
  set(documents .)
  install(PROGRAMS ${KX_RUNTIME_LIBRARIES} DESTINATION ${folder} COMPONENT kxhost)
  if(MINGW) # their debug information is nine tenths of them
    install(CODE "
      file(GLOB libraries \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/*.dll\")
      execute_process(COMMAND \"${CMAKE_STRIP}\" \${libraries} COMMAND_ERROR_IS_FATAL ANY)" COMPONENT kxhost)
  endif()
else()
  set(folder lib/kxhost)
  set(documents share/doc/kxhost)
  install(TARGETS kx_launcher kx_watcher RUNTIME DESTINATION ${folder} COMPONENT kxhost)
  install(CODE "
    set(bin \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/bin\")
    file(MAKE_DIRECTORY \"\${bin}\")
    file(CREATE_LINK ../lib/kxhost/kxhost \"\${bin}/kxhost\" SYMBOLIC)" COMPONENT kxhost)
  install(FILES LICENSE DESTINATION ${documents} COMPONENT kxhost RENAME copyright)
endif()
install(TARGETS kxhost kxcore kxwebdav KxVisualStudioDotNET COMPONENT kxhost
        RUNTIME DESTINATION ${folder} LIBRARY DESTINATION ${folder})
set(parts kxhost kxwebdav KxVisualStudioDotNET)
if(TARGET kx_launcher)
  list(APPEND parts kx_launcher)
endif()
if(TARGET kx_logger)
  list(APPEND parts kx_logger)
  install(FILES "${PROJECT_BINARY_DIR}/bin/TandemorLogger.dll" DESTINATION ${folder} COMPONENT kxhost)
endif()
install(FILES README.md LICENSE DESTINATION ${documents} COMPONENT kxhost)
install(DIRECTORY docs examples DESTINATION ${documents} COMPONENT kxhost
        PATTERN plugin EXCLUDE PATTERN bin EXCLUDE PATTERN obj EXCLUDE)

# Headers are compiled in; for Windows the libraries and the compiler's run time are packed too, whose terms refer to the
# GPL as Debian keeps it.
set(licences libcli11-dev nlohmann-json3-dev libboost1.74-dev)
if(MINGW)
  list(APPEND licences gcc-mingw-w64-base mingw-w64-x86-64-dev)
  install(FILES /usr/share/common-licenses/GPL-3 DESTINATION ${documents}/licences COMPONENT kxhost RENAME GPL-3.txt)
  install(DIRECTORY "${KX_WINDOWS_LIBRARIES}/licences/" DESTINATION ${documents}/licences COMPONENT kxhost
          PATTERN googletest.txt EXCLUDE)
endif()
foreach(name IN LISTS licences)
  install(FILES /usr/share/doc/${name}/copyright DESTINATION ${documents}/licences COMPONENT kxhost OPTIONAL
          RENAME ${name}.txt)
endforeach()

set(CPACK_PACKAGE_NAME kxhost)
set(CPACK_PACKAGE_VENDOR "The ${PROJECT_NAME} authors")
set(CPACK_PACKAGE_CONTACT "The ${PROJECT_NAME} authors <kxhost@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Builds, stamps and tests Visual Studio 2002-2010 solutions")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_SOURCE_DIR}/out")
set(CPACK_COMPONENTS_ALL kxhost)
set(CPACK_INSTALL_CMAKE_PROJECTS "${PROJECT_BINARY_DIR};${PROJECT_NAME};kxhost;/")
set(CPACK_STRIP_FILES ON)
set(CPACK_VERBATIM_VARIABLES ON)
if(WIN32)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME "kxhost-${PROJECT_VERSION}-windows-x64")
else()
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
  set(CPACK_DEBIAN_PACKAGE_SECTION devel)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/bin")
  set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "mono-xbuild, mono-mcs")
endif()
include(CPack)
add_custom_target(kx_pack COMMAND "${CMAKE_CPACK_COMMAND}" WORKING_DIRECTORY "${PROJECT_BINARY_DIR}" DEPENDS ${parts}
                  VERBATIM)
