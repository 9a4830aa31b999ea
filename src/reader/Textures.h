// Writing the picture file of a material row.
#pragma once

#include "run/ModelImporter.h"

// Writes the row's picture file at the first call for the row; later calls do nothing, whatever came of
// the first. A row without a picture is passed over without a word. A failed write is logged and sets
// ImportStatus, which ends the import.
void WriteMaterialTexture(ModelImporter& importer, MaterialEntry& entry);
