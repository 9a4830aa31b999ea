// Conversion of paths for the library.
#include "reader/LibraryPath.h"

#include "platform/Platform.h"
#include "tool/Paths.h"

std::optional<std::string> LibraryPath(const std::u16string& path) {
    std::string bytes = Utf8FromUtf16(path);
    if (bytes.size() >= PathLimit) {
        return std::nullopt;
    }
    return bytes;
}
