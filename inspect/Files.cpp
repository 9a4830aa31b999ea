// Whole files in and out, through the platform's streams.
#include "inspect/Files.h"

#include "platform/Platform.h"

namespace {

// Bytes.
constexpr size_t ReadStep = size_t{1} << 20;

size_t ComponentStart(const std::u16string& path) {
    const size_t separator = path.find_last_of(u"/\\:");
    return separator == std::u16string::npos ? 0 : separator + 1;
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

bool WriteWholeFile(const std::u16string& path, std::string_view bytes) {
    std::FILE* const file = OpenForWriting(path);
    if (file == nullptr) {
        return false;
    }
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const bool closed = std::fclose(file) == 0;
    return written && closed;
}

std::u16string LastComponent(const std::u16string& path) {
    return path.substr(ComponentStart(path));
}

std::u16string DirectoryPart(const std::u16string& path) {
    return path.substr(0, ComponentStart(path));
}
