// The pictures, materials and layers of a model document.
#pragma once

#include "provider/document/DocumentReader.h"

// The index in Output of the picture of a file name, which is loaded at its first use.
bool ReadPicture(DocumentReader& reader, uint32_t node, uint32_t& index);

// Width and height in model units of something that shows a picture: pixels where the document states
// neither, the picture's proportions where it states one.
bool ReadPictureSize(DocumentReader& reader, uint32_t widthNode, uint32_t heightNode, uint32_t picture,
                     double& width, double& height);

// Both append to Output and enter the name.
bool ReadMaterial(DocumentReader& reader, uint32_t node);
bool ReadLayer(DocumentReader& reader, uint32_t node);
