// Whether a model that was opened keeps what the library's operations rely on.
#pragma once

#include "provider/model/Model.h"

// Ends the process if a reference leads nowhere or a list lies inside itself; then reads every face,
// image and material through the operations. Takes the model over.
void CheckModel(Model model);
