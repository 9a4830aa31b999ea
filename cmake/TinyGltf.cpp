// tinygltf's own code, compiled here and nowhere else. Without its file system it forgets a header.
#include <fstream>

#define TINYGLTF_IMPLEMENTATION
#include <tiny_gltf.h>
