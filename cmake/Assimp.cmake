# The assimp library.
#
# ORVANE_ASSIMP    whether the build has it
# assimp-library   links it with what it needs, and finds its headers

find_path(assimpIncludeDir assimp/cimport.h)
find_library(assimpLibrary assimp)
# Only a build for Windows can lack it by itself. That isn't kept in the cache, so that the next configuration finds a
# library that is there by then.
if(NOT DEFINED ORVANE_ASSIMP)
  set(ORVANE_ASSIMP ON)
  if(WIN32 AND NOT assimpLibrary)
    set(ORVANE_ASSIMP OFF)
  endif()
endif()
if(NOT ORVANE_ASSIMP)
  message(STATUS "Without COLLADA, OBJ, FBX, IFC and others, for lack of assimp")
  return()
elseif(NOT assimpLibrary)
  message(FATAL_ERROR "assimp is not installed, which ORVANE_ASSIMP requires")
endif()

add_library(assimp-library INTERFACE IMPORTED GLOBAL)
target_include_directories(assimp-library SYSTEM INTERFACE ${assimpIncludeDir})
target_link_libraries(assimp-library INTERFACE ${assimpLibrary})
if(WIN32)
  # A static library brings nothing along.
  foreach(name minizip draco z)
    find_library(${name}Library ${name} REQUIRED)
    target_link_libraries(assimp-library INTERFACE ${${name}Library})
  endforeach()
endif()
