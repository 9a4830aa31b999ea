// The command line of scene-inspect.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The report on standard output.
enum class Report { Summary, Tree, Json, Differences };

struct Options {
    bool WantsHelp = false;
    bool WantsVersion = false;
    Report Kind = Report::Summary;
    std::u16string File;
    std::u16string Other; // The file to compare with. Empty for none, as below.
    std::u16string GltfFile;
    std::u16string PictureFile;
    std::u16string PageFile;
    std::u16string TextureDirectory; // Empty: that of File.
    uint32_t Width = 1280;           // Pixels of the picture.
    uint32_t Height = 800;
};

// Returns an empty text, or the reason why the arguments are invalid. An output must not name an input
// or another output.
std::u16string ParseOptions(const std::vector<std::u16string>& arguments, Options& options);

// Lines, each with a final LF.
std::u16string UsageText();
std::u16string VersionText();
