// The node tree as text.
#pragma once

#include "inspect/stored/SceneReader.h"

#include <string>

// One line per node and mesh, indented by level. Nodes have their numbers in the file.
std::u16string TreeText(const StoredScene& scene);

// The same for a scene that is read part by part. Returns the fault if the file is not sound; the text
// then covers the part before it.
std::optional<SceneFault> TreeText(SceneReading& reading, std::u16string& text);
