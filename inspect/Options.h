// The command line of scene-inspect.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// What goes to standard output.
enum class Report { Summary, Tree, Json, Differences };

struct Options {
    bool WantsHelp = false;
    Report Kind = Report::Summary;
    std::u16string File;
    std::u16string Other; // The file to compare with; empty for none. Likewise below.
    std::u16string GltfFile;
    std::u16string PictureFile;
    std::u16string TextureDirectory; // Empty: where File is.
    uint32_t Width = 1280;           // Pixels of the picture.
    uint32_t Height = 800;
};

// Gives an empty text, or what is wrong with the arguments. No output may name a file that is read, nor
// the other output.
std::u16string ParseOptions(const std::vector<std::u16string>& arguments, Options& options);

// Several lines, each closed by LF.
std::u16string UsageText();
