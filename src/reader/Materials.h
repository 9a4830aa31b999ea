// Fills the MaterialTable from the model, before the walk.
#pragma once

#include "run/ModelImporter.h"

// Appends the default row, then one row for each material of the model, used or not. Textured materials
// with the same source file name and the same red, green and blue share one texture file. If a query
// fails, rows lack data, or only the default row exists; nothing is logged and no status set.
void ImportMaterials(ModelImporter& importer);
