// Checks the invariants of an opened model that the library's operations rely on.
#pragma once

#include "provider/model/Model.h"

// Aborts if a reference is out of range or a list contains itself. Then reads every face through the
// operations and encodes small pictures. Takes ownership of the model.
void CheckModel(Model model);
