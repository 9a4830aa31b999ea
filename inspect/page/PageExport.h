// A scene as one HTML page that shows it in 3D, for a browser without a server or a network.
//
// The page contains everything: the program that draws, the triangles, the pictures, the summary and the
// tree. Texts from the file are data in it, never HTML.
#pragma once

#include "inspect/stored/StoredScene.h"
#include "inspect/stored/Textures.h"

#include <string>

// Triangles of a scene: more open too slowly.
constexpr uint64_t MostPageTriangles = 2'000'000;
// Bytes of a page, for the same reason.
constexpr uint64_t LargestPage = 200'000'000;

struct PageFile {
    std::string Bytes;     // Empty if there is a reason.
    std::u16string Reason; // Why there is no page.
    uint64_t TrianglesLeftOut = 0;
};

// The title is the name of the scene file.
PageFile ExportPage(const StoredScene& scene, TextureShelf& textures, const std::u16string& title);
