// The node tree in words, for people.
#pragma once

#include "inspect/stored/SceneReader.h"

#include <string>

// One line per node and mesh, indented by their level; nodes with their numbers in the file.
std::u16string TreeText(const StoredScene& scene);

// The same without the scene in memory. Gives the fault if the file isn't sound; the text is then of the
// part before it.
std::optional<SceneFault> TreeText(SceneReading& reading, std::u16string& text);
