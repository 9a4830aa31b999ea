// The pictures, materials and layers of a model document.
#pragma once

#include "provider/document/DocumentReader.h"

// The index in Output of a picture file, which is loaded on first use.
bool ReadPicture(DocumentReader& reader, uint32_t node, uint32_t& index);

// Width and height of a texture or image in model units: the picture's pixels if the document states
// neither, its aspect ratio if the document states one.
bool ReadPictureSize(DocumentReader& reader, uint32_t widthNode, uint32_t heightNode, uint32_t picture,
                     double& width, double& height);

// Both append to Output and register the name.
bool ReadMaterial(DocumentReader& reader, uint32_t node);
bool ReadLayer(DocumentReader& reader, uint32_t node);
