# Installation, and two packages: a .deb for Linux, a .zip for Windows.
#
# The library is always beside the program, where another one can replace it. On Linux both are in
# /usr/lib/orvane, with links to the programs in /usr/bin.
if(WIN32)
  set(programDir .)
  set(documentDir .)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME "orvane-${PROJECT_VERSION}-windows-x64")
else()
  set(programDir lib/orvane)
  set(documentDir share/doc/orvane)
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME "orvane_${PROJECT_VERSION}_amd64.deb")
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER "The orvane maintainers <orvane@localhost>")
  set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
  foreach(program orvane scene-inspect)
    file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/links)
    file(CREATE_LINK ../lib/orvane/${program} ${CMAKE_BINARY_DIR}/links/${program} SYMBOLIC)
    install(FILES ${CMAKE_BINARY_DIR}/links/${program} DESTINATION bin)
    install(FILES docs/man/${program}.1 DESTINATION share/man/man1)
  endforeach()
endif()

install(TARGETS orvane scene-inspect SketchUpAPI
  RUNTIME DESTINATION ${programDir}
  LIBRARY DESTINATION ${programDir})
install(FILES README.md DESTINATION ${documentDir})
install(DIRECTORY docs examples DESTINATION ${documentDir} PATTERN man EXCLUDE)

set(CPACK_PACKAGE_VENDOR "orvane")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_STRIP_FILES ON)
include(CPack)
