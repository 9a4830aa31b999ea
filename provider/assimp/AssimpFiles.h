// The files that assimp opens, read through the platform layer.
#pragma once

#include <assimp/cfileio.h>
#include <string>

// Assimp sees the model file under ShownPath, whose ending selects the format, and all other files under
// their own paths. Must outlive every file that is opened through it.
struct AssimpFiles {
    std::u16string Path;
    std::string ShownPath;
    aiFileIO Operations;
};

// Sets Operations. files must not move afterwards.
void PrepareFiles(AssimpFiles& files);
