// Paths in the form that the library takes.
#pragma once

#include <optional>
#include <string>

// The path as UTF-8, otherwise as it stands. Nothing if it doesn't fit the library's limit: such a path
// is never handed on, and the call that needed it counts as failed.
std::optional<std::string> LibraryPath(const std::u16string& path);
