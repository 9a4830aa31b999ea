// Whole files in and out, through the platform's streams.
#include "inspect/Files.h"

#include "platform/Platform.h"

#include <cerrno>

namespace {

// Bytes.
constexpr size_t ReadStep = size_t{1} << 20;

size_t ComponentStart(const std::u16string& path) {
    const size_t separator = path.find_last_of(u"/\\");
    if (separator != std::u16string::npos) {
        return separator + 1;
    }
    const bool hasDrive = path.size() >= 2 && path[1] == u':' &&
                          ((path[0] >= u'A' && path[0] <= u'Z') || (path[0] >= u'a' && path[0] <= u'z'));
    return hasDrive ? 2 : 0;
}

} // namespace

std::optional<std::vector<uint8_t>> ReadWholeFile(const std::u16string& path, size_t limit) {
    std::FILE* const file = OpenForReading(path);
    if (file == nullptr) {
        return std::nullopt;
    }
    std::vector<uint8_t> bytes;
    size_t got = ReadStep;
    while (got == ReadStep && bytes.size() <= limit) {
        const size_t before = bytes.size();
        bytes.resize(before + ReadStep);
        got = std::fread(bytes.data() + before, 1, ReadStep, file);
        bytes.resize(before + got);
    }
    const bool sound = std::ferror(file) == 0 && bytes.size() <= limit;
    std::fclose(file);
    return sound ? std::optional(std::move(bytes)) : std::nullopt;
}

int WriteWholeFile(const std::u16string& path, std::string_view bytes) {
    errno = 0;
    std::FILE* const file = OpenForWriting(path);
    if (file == nullptr) {
        return FailureReason();
    }
    // Not every system's fclose reports buffered bytes that don't go out.
    const bool written =
        std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && std::fflush(file) == 0;
    const int writing = written ? 0 : FailureReason();
    const int closing = std::fclose(file) == 0 ? 0 : FailureReason();
    return writing != 0 ? writing : closing;
}

std::u16string LastComponent(const std::u16string& path) {
    return path.substr(ComponentStart(path));
}

std::u16string DirectoryPart(const std::u16string& path) {
    return path.substr(0, ComponentStart(path));
}
