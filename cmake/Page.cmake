# The page of scene-inspect --html: inspect/page/viewer and three.js, bundled into one HTML text that the program
# embeds.
#
# ORVANE_PAGE              whether the build has it; needs npm, and for the first build its registry
# AddPageTemplate(TARGET)  adds the source with the text, which is empty without the page

find_program(npmProgram npm)
find_program(nodeProgram NAMES node nodejs)
# A build that lacks it by itself doesn't keep that in the cache, so that the next configuration finds npm.
if(NOT DEFINED ORVANE_PAGE)
  set(ORVANE_PAGE ON)
  if(NOT npmProgram OR NOT nodeProgram)
    set(ORVANE_PAGE OFF)
  endif()
endif()
if(NOT ORVANE_PAGE)
  message(STATUS "Without scene-inspect --html, which needs npm")
elseif(NOT npmProgram OR NOT nodeProgram)
  message(FATAL_ERROR "npm is not installed, which ORVANE_PAGE requires")
endif()

function(AddPageTemplate target)
  set(pageDir ${CMAKE_BINARY_DIR}/page)
  if(NOT ORVANE_PAGE)
    file(CONFIGURE OUTPUT ${pageDir}/NoPage.cpp CONTENT
      "#include \"inspect/page/PageTemplate.h\"\n\nconst std::string_view PageTemplate;\n" @ONLY)
    target_sources(${target} PRIVATE ${pageDir}/NoPage.cpp)
    return()
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
    OUTPUT ${pageDir}/PageTemplate.cpp
    COMMAND ${nodeProgram} ${viewerDir}/build.mjs ${pageDir} ${pageDir}/PageTemplate.cpp
    DEPENDS ${pageDir}/installed ${viewerFiles}
    COMMENT "Bundling the page"
    VERBATIM)
  target_sources(${target} PRIVATE ${pageDir}/PageTemplate.cpp)
endfunction()
