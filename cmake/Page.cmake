# The page of scene-inspect --html: viewer/ and three.js, bundled into one HTML text that the program embeds.
#
# ORVANE_PAGE    whether the build has it; needs npm, and its registry for the first build
# pageTemplate   the source with the text, empty without the page

find_program(npmProgram npm)
find_program(nodeProgram NAMES node nodejs)
# A build that lacks it by itself doesn't keep that in the cache, so that the next configuration finds npm.
if(NOT DEFINED ORVANE_PAGE)
  set(ORVANE_PAGE ON)
  if(NOT npmProgram OR NOT nodeProgram)
    set(ORVANE_PAGE OFF)
  endif()
endif()

set(pageDir ${CMAKE_BINARY_DIR}/page)
set(pageTemplate ${pageDir}/PageTemplate.cpp)
if(NOT ORVANE_PAGE)
  message(STATUS "Without scene-inspect --html, for lack of npm")
  file(CONFIGURE OUTPUT ${pageTemplate} CONTENT
    "#include \"inspect/page/PageTemplate.h\"\n\nconst std::string_view PageTemplate;\n" @ONLY)
  return()
elseif(NOT npmProgram OR NOT nodeProgram)
  message(FATAL_ERROR "npm is not installed, which ORVANE_PAGE requires")
endif()

set(viewerDir ${CMAKE_SOURCE_DIR}/inspect/page/viewer)
file(GLOB viewerFiles CONFIGURE_DEPENDS ${viewerDir}/*.js ${viewerDir}/*.mjs ${viewerDir}/*.html ${viewerDir}/*.css)
add_custom_command(
  OUTPUT ${pageDir}/installed
  COMMAND ${CMAKE_COMMAND} -E copy ${viewerDir}/package.json ${viewerDir}/package-lock.json ${pageDir}
  COMMAND ${npmProgram} --prefix ${pageDir} ci --ignore-scripts --no-audit --no-fund --silent
  COMMAND ${CMAKE_COMMAND} -E touch ${pageDir}/installed
  DEPENDS ${viewerDir}/package.json ${viewerDir}/package-lock.json
  COMMENT "Installing what the page is made with"
  VERBATIM)
add_custom_command(
  OUTPUT ${pageTemplate}
  COMMAND ${nodeProgram} ${viewerDir}/build.mjs ${pageDir} ${pageTemplate}
  DEPENDS ${pageDir}/installed ${viewerFiles}
  COMMENT "Bundling the page"
  VERBATIM)
