// Opens a model file of any supported format.
#pragma once

#include "provider/model/Model.h"

#include <string>

// Fills an empty model. Returns false, with the place in the file and the reason in error, if the file
// can't be used.
bool OpenModel(const std::u16string& path, Model& model, std::string& error);
