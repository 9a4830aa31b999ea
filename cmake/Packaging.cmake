# Installation, and two packages: a .deb for Linux, a .zip for Windows.
#
# ORVANE_MAINTAINER   who answers for the .deb: a name and an address that receives mail
#
# The library is always beside the program, where another one can replace it. On Linux both are in a folder of their
# own, with links to the programs in /usr/bin.
set(ORVANE_MAINTAINER "The orvane maintainers <orvane@localhost>" CACHE STRING
  "Name and mail address of whoever makes the .deb")
set(packageDir ${CMAKE_BINARY_DIR}/package)
set(packageSources ${CMAKE_CURRENT_LIST_DIR}/package)
file(MAKE_DIRECTORY ${packageDir})

# Compresses a file for the .deb as the system's tools expect: without its name and time.
function(compress_file source target)
  add_custom_command(OUTPUT ${target} DEPENDS ${source}
    COMMAND sh -c "gzip -9nc '${source}' >'${target}'" VERBATIM)
endfunction()

if(WIN32)
  set(programDir .)
  set(documentDir .)
  set(noticesFile NOTICES.txt)
  set(licenseFile LICENSE.txt)
  set(CPACK_GENERATOR ZIP)
  set(CPACK_PACKAGE_FILE_NAME "orvane-${PROJECT_VERSION}-windows-x64")
else()
  set(programDir lib/${CMAKE_LIBRARY_ARCHITECTURE}/orvane)
  set(documentDir share/doc/orvane)
  set(noticesFile NOTICES)
  set(licenseFile copyright)
  set(CPACK_GENERATOR DEB)
  set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
  set(CPACK_DEBIAN_FILE_NAME "orvane_${PROJECT_VERSION}_amd64.deb")
  set(CPACK_DEBIAN_PACKAGE_MAINTAINER ${ORVANE_MAINTAINER})
  set(CPACK_DEBIAN_PACKAGE_SECTION graphics)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
  set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_BINARY_DIR})
  set(CPACK_PACKAGE_DESCRIPTION_FILE ${packageSources}/description)
  # The day of the build; SOURCE_DATE_EPOCH sets another one.
  string(TIMESTAMP packageDate "%a, %d %b %Y 00:00:00 +0000" UTC)
  configure_file(${packageSources}/changelog.in ${packageDir}/changelog @ONLY)
  compress_file(${packageDir}/changelog ${packageDir}/changelog.gz)
  set(compressed ${packageDir}/changelog.gz)
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/links)
  foreach(program orvane scene-inspect)
    file(CREATE_LINK ../${programDir}/${program} ${CMAKE_BINARY_DIR}/links/${program} SYMBOLIC)
    install(FILES ${CMAKE_BINARY_DIR}/links/${program} DESTINATION bin)
    compress_file(${CMAKE_SOURCE_DIR}/docs/man/${program}.1 ${packageDir}/${program}.1.gz)
    list(APPEND compressed ${packageDir}/${program}.1.gz)
    install(FILES ${packageDir}/${program}.1.gz DESTINATION share/man/man1)
  endforeach()
  add_custom_target(package-files ALL DEPENDS ${compressed})
  install(FILES ${packageDir}/changelog.gz DESTINATION ${documentDir})
  install(FILES ${packageSources}/scene-inspect.bash DESTINATION share/bash-completion/completions
    RENAME scene-inspect)
endif()

install(TARGETS orvane scene-inspect SketchUpAPI
  RUNTIME DESTINATION ${programDir}
  LIBRARY DESTINATION ${programDir})
install(FILES README.md DESTINATION ${documentDir})
install(FILES LICENSE DESTINATION ${documentDir} RENAME ${licenseFile})
install(DIRECTORY docs examples DESTINATION ${documentDir} PATTERN man EXCLUDE)
# The notices of the libraries. Gathered when the package is made, so that only packages need all of them.
set(noticesOf nlohmann-json3-dev libstb-dev libtinygltf-dev)
if(ORVANE_PICTURES)
  list(APPEND noticesOf libjpeg62-turbo-dev libspng-dev libwebp-dev)
endif()
if(ORVANE_GLTF_COMPRESSION)
  list(APPEND noticesOf libdraco-dev libmeshoptimizer-dev)
endif()
if(ORVANE_ASSIMP)
  list(APPEND noticesOf libassimp-dev libminizip1)
endif()
if(WIN32)
  list(APPEND noticesOf libz-mingw-w64-dev gcc-mingw-w64-x86-64-posix-runtime mingw-w64-x86-64-dev)
  if(ORVANE_ASSIMP)
    list(APPEND noticesOf libutfcpp-dev)
  endif()
else()
  list(APPEND noticesOf zlib1g-dev libglu1-mesa libstdc++6 libc6)
endif()
if(ORVANE_PAGE)
  list(APPEND noticesOf ${CMAKE_BINARY_DIR}/page/node_modules/three/LICENSE)
endif()
install(CODE "
  set(target ${packageDir}/${noticesFile})
  set(notices \"${noticesOf}\")
  include(${CMAKE_CURRENT_LIST_DIR}/Notices.cmake)")
install(FILES ${packageDir}/${noticesFile} DESTINATION ${documentDir})

set(CPACK_PACKAGE_VENDOR "orvane")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY ${PROJECT_DESCRIPTION})
set(CPACK_STRIP_FILES ON)
include(CPack)
