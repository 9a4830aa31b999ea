// Opens a model file of any format known here.
#pragma once

#include "provider/model/Model.h"

#include <string>

// Fills an empty model. Gives false, and in error the place in the file and the reason, when the file
// can't be used.
bool OpenModel(const std::u16string& path, Model& model, std::string& error);
