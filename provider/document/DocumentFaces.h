// The faces of a model document.
#pragma once

#include "provider/document/DocumentReader.h"

// A face of the document: one or, for a triangulation that turns to all sides, several in Output.
bool ReadFace(DocumentReader& reader, uint32_t node);
