// A picture of a scene from a corner above: textured, lit from beside the eye, on a plain background.
#pragma once

#include "inspect/stored/StoredScene.h"
#include "inspect/stored/Textures.h"

// Pixels per side of the largest picture that is drawn, which takes up to 2 GB.
constexpr uint32_t LargestDrawingSide = 4096;

// Of a ScenePicture.
constexpr uint32_t PictureChannels = 3;

struct ScenePicture {
    uint32_t Width = 0; // Pixels.
    uint32_t Height = 0;
    std::vector<uint8_t> Pixels; // Red, green, blue; rows from the top.
};

// Both sides from 1 to LargestDrawingSide. Triangles with a position that isn't finite are left out, and
// node matrices aren't applied: in a finished scene they are the identity.
ScenePicture DrawScene(const StoredScene& scene, TextureShelf& textures, uint32_t width,
                       uint32_t height);
