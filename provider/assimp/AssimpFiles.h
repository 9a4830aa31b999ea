// The files that assimp asks for, opened by this system's ways.
#pragma once

#include <assimp/cfileio.h>
#include <string>

// The model file stands under a name of its own choice, which tells assimp the format; all others under
// theirs. Must outlive every file that is opened through it.
struct AssimpFiles {
    std::u16string Path;
    std::string ShownPath;
    aiFileIO Operations;
};

// Completes the operations. files must stay where it is.
void PrepareFiles(AssimpFiles& files);
