// The faces of a model document.
#pragma once

#include "provider/document/DocumentReader.h"

// Reads a face: one in Output, or several for a triangulation that faces all directions.
bool ReadFace(DocumentReader& reader, uint32_t node);
