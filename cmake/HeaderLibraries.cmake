# Libraries that are headers alone, the same for every system that is built for. They are reached through a folder
# of links to just them: the whole of /usr/include must not come along when cross-building.
#
# header-libraries  nlohmann/json.hpp, stb_image.h, stb_image_write.h
#                   (stb_image.h is a mended copy)
# tinygltf          tiny_gltf.h, without its own reading and writing of pictures and files
set(headerDir ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headerDir})

find_path(nlohmannDir nlohmann/json.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${nlohmannDir}/nlohmann ${headerDir}/nlohmann SYMBOLIC)
find_path(stbDir stb_image.h PATH_SUFFIXES stb NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${stbDir}/stb_image_write.h ${headerDir}/stb_image_write.h SYMBOLIC)
find_path(tinygltfDir tiny_gltf.h NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${tinygltfDir}/tiny_gltf.h ${headerDir}/tiny_gltf.h SYMBOLIC)

# stb_image in a copy without two kinds of undefined behaviour. Where a JPEG's coded data ends within a number, it uses
# bits that aren't there and then shifts by 32 or more: the copy instead calls what the including file defines as
# STBI_MISSING_BITS(context). For a PNG's data chunk of no bytes it calls memcpy with null.
set(mendedDir ${CMAKE_BINARY_DIR}/mended-headers)
file(READ ${stbDir}/stb_image.h stbImage)
function(Mend statement condition)
  string(REPLACE "${statement}" "${condition} ${statement}" mended "${stbImage}")
  if(mended STREQUAL stbImage)
    message(FATAL_ERROR "${stbDir}/stb_image.h has no \"${statement}\", which has to be mended")
  endif()
  set(stbImage "${mended}" PARENT_SCOPE)
endfunction()
Mend("j->code_buffer |= b << (24 - j->code_bits);" "if (j->code_bits < 0) { STBI_MISSING_BITS(j->s); return; }")
Mend("memcpy(buffer, s->img_buffer, n);" "if (n > 0)")
file(GENERATE OUTPUT ${mendedDir}/stb_image.h CONTENT "${stbImage}")

add_library(header-libraries INTERFACE)
target_include_directories(header-libraries SYSTEM INTERFACE ${mendedDir} ${headerDir})

add_library(tinygltf STATIC cmake/TinyGltf.cpp)
target_link_libraries(tinygltf PUBLIC header-libraries)
target_compile_definitions(
  tinygltf PUBLIC TINYGLTF_NO_STB_IMAGE TINYGLTF_NO_STB_IMAGE_WRITE TINYGLTF_NO_EXTERNAL_IMAGE TINYGLTF_NO_FS)
