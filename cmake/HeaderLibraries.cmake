# Libraries that are headers alone, the same for every system that is built for. They are reached through a folder
# of links to just them: the whole of /usr/include must not come along when cross-building.
#
# header-libraries  nlohmann/json.hpp, stb_image.h, stb_image_write.h
# tinygltf          tiny_gltf.h, without its own reading and writing of pictures and files
set(headerDir ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headerDir})

find_path(nlohmannDir nlohmann/json.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${nlohmannDir}/nlohmann ${headerDir}/nlohmann SYMBOLIC)
find_path(stbDir stb_image.h PATH_SUFFIXES stb NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${stbDir}/stb_image.h ${headerDir}/stb_image.h SYMBOLIC)
file(CREATE_LINK ${stbDir}/stb_image_write.h ${headerDir}/stb_image_write.h SYMBOLIC)
find_path(tinygltfDir tiny_gltf.h NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${tinygltfDir}/tiny_gltf.h ${headerDir}/tiny_gltf.h SYMBOLIC)

add_library(header-libraries INTERFACE)
target_include_directories(header-libraries SYSTEM INTERFACE ${headerDir})

add_library(tinygltf STATIC cmake/TinyGltf.cpp)
target_link_libraries(tinygltf PUBLIC header-libraries)
target_compile_definitions(
  tinygltf PUBLIC TINYGLTF_NO_STB_IMAGE TINYGLTF_NO_STB_IMAGE_WRITE TINYGLTF_NO_EXTERNAL_IMAGE TINYGLTF_NO_FS)
