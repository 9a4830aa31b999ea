# Header-only libraries, the same for every target system. A folder of links exposes them alone: cross-builds must
# not see the rest of /usr/include.
#
# header-libraries  nlohmann/json.hpp, stb_image.h, stb_image_write.h
#                   (stb_image.h is a patched copy)
# tinygltf          tiny_gltf.h, without its picture and file access
set(headerDir ${CMAKE_BINARY_DIR}/headers)
file(MAKE_DIRECTORY ${headerDir})

find_path(nlohmannDir nlohmann/json.hpp NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${nlohmannDir}/nlohmann ${headerDir}/nlohmann SYMBOLIC)
find_path(stbDir stb_image.h PATH_SUFFIXES stb NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${stbDir}/stb_image_write.h ${headerDir}/stb_image_write.h SYMBOLIC)
find_path(tinygltfDir tiny_gltf.h NO_CMAKE_FIND_ROOT_PATH REQUIRED)
file(CREATE_LINK ${tinygltfDir}/tiny_gltf.h ${headerDir}/tiny_gltf.h SYMBOLIC)

# A copy of stb_image without two kinds of undefined behaviour. If a JPEG's coded data ends within a number, the
# original uses missing bits and then shifts by 32 or more; the copy calls STBI_MISSING_BITS(context), which the
# including file defines. For an empty data chunk of a PNG, the original calls memcpy with null.
set(mendedDir ${CMAKE_BINARY_DIR}/mended-headers)
file(READ ${stbDir}/stb_image.h stbImage)
function(Mend statement condition)
  string(REPLACE "${statement}" "${condition} ${statement}" mended "${stbImage}")
  if(mended STREQUAL stbImage)
    message(FATAL_ERROR "${stbDir}/stb_image.h has no \"${statement}\", which this build patches")
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
