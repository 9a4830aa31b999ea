# Header-only libraries, the same for every target system. A folder of links exposes them alone: cross-builds must
# not see the rest of /usr/include.
#
# header-libraries  nlohmann/json.hpp, stb_image.h
#                   (stb_image.h is a patched copy)
# tinygltf          tiny_gltf.h, without its picture and file access
set(headerDir ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headerDir})

find_path(nlohmannDir nlohmann/json.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${nlohmannDir}/nlohmann ${headerDir}/nlohmann SYMBOLIC)
find_path(stbDir stb_image.h PATH_SUFFIXES stb NO_CMAKE_FIND_ROOT_PATH REQUIRED)
find_path(tinygltfDir tiny_gltf.h NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${tinygltfDir}/tiny_gltf.h ${headerDir}/tiny_gltf.h SYMBOLIC)

# A copy of stb_image without undefined behaviour: in the original, a BMP pixel whose number is beyond the palette has
# the colour of uninitialised memory. In the copy it is black.
set(mendedDir ${CMAKE_BINARY_DIR}/mended-headers)
set(palette "stbi_uc pal[256][4];")
file(READ ${stbDir}/stb_image.h stbImage)
string(REPLACE "${palette}" "stbi_uc pal[256][4] = {};" mendedImage "${stbImage}")
if(mendedImage STREQUAL stbImage)
  message(FATAL_ERROR "${stbDir}/stb_image.h has no \"${palette}\", which this build patches")
endif()
file(GENERATE OUTPUT ${mendedDir}/stb_image.h CONTENT "${mendedImage}")

add_library(header-libraries INTERFACE)
target_include_directories(header-libraries SYSTEM INTERFACE ${mendedDir} ${headerDir})

add_library(tinygltf STATIC cmake/TinyGltf.cpp)
target_link_libraries(tinygltf PUBLIC header-libraries)
target_compile_definitions(
  tinygltf PUBLIC TINYGLTF_NO_STB_IMAGE TINYGLTF_NO_STB_IMAGE_WRITE TINYGLTF_NO_EXTERNAL_IMAGE TINYGLTF_NO_FS)
