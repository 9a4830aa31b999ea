// A picture of a scene, seen from the front, above and right: textured and lit, on a plain background.
#pragma once

#include "inspect/stored/StoredScene.h"
#include "inspect/stored/Textures.h"

// Largest side of a picture, in pixels. Drawing it takes up to 2 GB.
constexpr uint32_t LargestDrawingSide = 4096;

// Of a ScenePicture.
constexpr uint32_t PictureChannels = 3;

struct ScenePicture {
    uint32_t Width = 0; // Pixels.
    uint32_t Height = 0;
    std::vector<uint8_t> Pixels; // Red, green, blue; rows from the top.
};

// width and height are 1 to LargestDrawingSide. Triangles with a non-finite position are omitted. Node
// matrices are not applied: in a finished scene they are the identity.
ScenePicture DrawScene(const StoredScene& scene, TextureShelf& textures, uint32_t width,
                       uint32_t height);
