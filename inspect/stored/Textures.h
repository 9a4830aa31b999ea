// The texture files of a scene, found in one directory by the last component of the texture path.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

// A picture file, PNG or JPEG, and its pixels.
struct Texture {
    std::vector<uint8_t> FileBytes;
    const char* MimeType = nullptr;
    uint32_t Width = 0; // Pixels, above 0.
    uint32_t Height = 0;
    std::vector<uint8_t> Pixels; // Red, green, blue, alpha; rows from the top.
    bool IsOpaque = true;        // No pixel has alpha below 255.
};

struct TextureShelf {
    std::u16string Directory; // Ends with a separator; empty for the current one.
    // By file name; nothing for files that can't be used.
    std::map<std::u16string, std::optional<Texture>> Pictures;
    std::vector<std::u16string> Warnings; // One per file that can't be used.
};

// Takes over the bytes of a picture file. Returns nothing, or the reason why they can't be used,
// which completes the sentence "texture ...".
std::u16string LoadTexture(std::vector<uint8_t> bytes, Texture& texture);

// Returns null for an empty path and for files that can't be used. Each file is read once; the pointer
// is valid as long as the shelf.
const Texture* FindTexture(TextureShelf& shelf, const std::u16string& storedPath);
