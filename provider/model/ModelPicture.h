// Pictures of textures and images: PNG, JPEG, WebP, BMP or TGA in, PNG out.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

// A picture as the bytes of its file, which are decoded again when it is written.
struct ModelPicture {
    std::vector<uint8_t> Bytes;
    uint32_t Width = 0; // pixels, above 0
    uint32_t Height = 0;
    bool SoundPng = false; // Bytes is a PNG file with correct checksums
};

// Takes over the bytes of a picture file after decoding them once as a check. Returns false and the
// reason if the bytes can't be used; the reason completes the sentence "the picture ...".
bool LoadPicture(std::vector<uint8_t> bytes, ModelPicture& picture, std::string& reason);

// Makes a picture from texels: red, green, blue, alpha, row by row from the top. Returns false and the
// reason, as LoadPicture does, if a size is 0 or too large or doesn't match the number of bytes, or if
// the picture can't be encoded.
bool MakePicture(uint32_t width, uint32_t height, std::span<const uint8_t> texels, ModelPicture& picture,
                 std::string& reason);

// The picture as a PNG file: its own bytes if they are sound PNG. Returns false and the reason, as
// LoadPicture does, if it can't be encoded.
bool EncodePng(const ModelPicture& picture, std::vector<uint8_t>& png, std::string& reason);
