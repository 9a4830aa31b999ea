// Reads images, which are pictures placed in space, as textured quads.
#pragma once

#include "api/SketchUpAPI.h"
#include "run/ModelImporter.h"

// Appends two quads for each visible image of the list, a front and an opposite back, in the coordinates
// of the list, Y up. Finds or appends the row of the picture's file name and writes its texture file. An
// image without a readable size gets no quads. A failed transformation skips the rest of the list too.
void ImportImages(ModelImporter& importer, EntitiesHandle entities, PolygonList& polygons);
