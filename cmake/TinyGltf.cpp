// The implementation of tinygltf. Without its file access, tiny_gltf.h lacks an include of <fstream>.
#include <fstream>

#define TINYGLTF_IMPLEMENTATION
#include <tiny_gltf.h>
