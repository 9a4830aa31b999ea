# Version, description, icon and manifest of the files for Windows.
#
# add_windows_resources(TARGET DESCRIPTION)   does nothing on other systems
set(windowsDir ${CMAKE_CURRENT_LIST_DIR}/windows)
if(WIN32)
  enable_language(RC)
endif()

function(add_windows_resources target description)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(fileType VFT_APP)
    set(fileName ${target}.exe)
    set(programResources "1 ICON \"${windowsDir}/orvane.ico\"\n1 24 \"${windowsDir}/orvane.manifest\"")
  else()
    set(fileType VFT_DLL)
    set(fileName ${target}.dll)
    set(programResources "")
  endif()
  set(resources ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${windowsDir}/orvane.rc.in ${resources} @ONLY)
  set_source_files_properties(${resources} PROPERTIES OBJECT_DEPENDS
    "${windowsDir}/orvane.ico;${windowsDir}/orvane.manifest")
  target_sources(${target} PRIVATE ${resources})
endfunction()
