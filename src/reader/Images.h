// Images: pictures placed in space, read as textured quads.
#pragma once

#include "api/SketchUpAPI.h"
#include "run/ModelImporter.h"

// Appends two quads for each visible image of the list, a front and a back that faces the other way, in
// the coordinates of the list, Y up, with the row of the picture's file name, which is found or made
// here. An image whose size can't be read leaves a polygon without vertices; a failed transformation
// ends the list. The picture files are written on the way.
void ImportImages(ModelImporter& importer, EntitiesHandle entities, PolygonList& polygons);
