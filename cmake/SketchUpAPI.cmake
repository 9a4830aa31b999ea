# Linker inputs made from the header that declares the library's operations: the export list of a library, and
# the names to link a program against.
#
# SketchUpAPI::Link           for programs: the names alone, nothing of any provider
# SketchUpAPIExports(TARGET)  makes a shared library export the operations and nothing else

set(apiHeader ${CMAKE_SOURCE_DIR}/api/SketchUpAPI.h)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${apiHeader})
file(STRINGS ${apiHeader} apiLines REGEX "^[^/]*SU[A-Z][A-Za-z0-9]+\\(")
set(apiNames "")
foreach(line IN LISTS apiLines)
  string(REGEX MATCH "(SU[A-Z][A-Za-z0-9]+)\\(" unused "${line}")
  list(APPEND apiNames ${CMAKE_MATCH_1})
endforeach()
list(LENGTH apiNames apiCount)
if(NOT apiCount EQUAL 64)
  message(FATAL_ERROR "${apiHeader} declares ${apiCount} operations, not 64")
endif()

set(apiDir ${CMAKE_BINARY_DIR}/link)
list(JOIN apiNames ";\n  " apiMap)
file(CONFIGURE OUTPUT ${apiDir}/SketchUpAPI.map CONTENT "{\nglobal:\n  @apiMap@;\nlocal:\n  *;\n};\n" @ONLY)
list(JOIN apiNames "\n  " apiDef)
file(CONFIGURE OUTPUT ${apiDir}/SketchUpAPI.def CONTENT "LIBRARY SketchUpAPI\nEXPORTS\n  @apiDef@\n" @ONLY)

if(WIN32)
  add_custom_command(
    OUTPUT ${apiDir}/libSketchUpAPI.dll.a
    COMMAND ${CMAKE_DLLTOOL} -d ${apiDir}/SketchUpAPI.def -l ${apiDir}/libSketchUpAPI.dll.a
    DEPENDS ${apiDir}/SketchUpAPI.def)
  add_custom_target(SketchUpAPIImport DEPENDS ${apiDir}/libSketchUpAPI.dll.a)
  add_library(SketchUpAPI::Link INTERFACE IMPORTED GLOBAL)
  set_target_properties(SketchUpAPI::Link PROPERTIES INTERFACE_LINK_LIBRARIES ${apiDir}/libSketchUpAPI.dll.a)
  add_dependencies(SketchUpAPI::Link SketchUpAPIImport)
else()
  set(apiStub "")
  foreach(name IN LISTS apiNames)
    string(APPEND apiStub "void ${name}(void);\nvoid ${name}(void) {}\n")
  endforeach()
  file(CONFIGURE OUTPUT ${apiDir}/SketchUpAPI.c CONTENT "@apiStub@" @ONLY)
  add_library(SketchUpAPIStub SHARED ${apiDir}/SketchUpAPI.c)
  set_target_properties(
    SketchUpAPIStub PROPERTIES OUTPUT_NAME SketchUpAPI LIBRARY_OUTPUT_DIRECTORY ${apiDir})
  add_library(SketchUpAPI::Link ALIAS SketchUpAPIStub)
endif()

function(SketchUpAPIExports target)
  set_target_properties(${target} PROPERTIES OUTPUT_NAME SketchUpAPI)
  if(WIN32)
    set_target_properties(${target} PROPERTIES PREFIX "")
    target_sources(${target} PRIVATE ${apiDir}/SketchUpAPI.def)
  else()
    target_link_options(${target} PRIVATE -Wl,--version-script=${apiDir}/SketchUpAPI.map)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${apiDir}/SketchUpAPI.map)
  endif()
endfunction()
