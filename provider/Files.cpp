// Whole files, read and written at once.
#include "provider/Files.h"

#include "platform/Platform.h"

#include <cstdio>
#include <memory>

constexpr size_t ReadSize = 1 << 20; // bytes

bool ReadWholeFile(const std::u16string& path, std::vector<uint8_t>& bytes) {
    // Pipes and devices may never end.
    if ((FileAttributes(path) & (DirectoryAttribute | DeviceAttribute)) != 0) {
        return false;
    }
    const auto close = [](std::FILE* file) {
        std::fclose(file);
    };
    const std::unique_ptr<std::FILE, decltype(close)> file(OpenForReading(path), close);
    if (file == nullptr) {
        return false;
    }
    bytes.clear();
    size_t count = 0;
    do {
        const size_t size = bytes.size();
        bytes.resize(size + ReadSize);
        count = std::fread(bytes.data() + size, 1, ReadSize, file.get());
        bytes.resize(size + count);
    } while (count == ReadSize);
    return std::ferror(file.get()) == 0;
}

bool WriteWholeFile(const std::u16string& path, std::span<const uint8_t> bytes) {
    std::FILE* file = OpenForWriting(path);
    if (file == nullptr) {
        return false;
    }
    // Not every system's fclose reports buffered bytes that don't go out.
    const bool written =
        std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size() && std::fflush(file) == 0;
    return std::fclose(file) == 0 && written;
}

bool IsAbsolutePath(const std::u16string& path) {
    return path.starts_with(u'/') || path.starts_with(u'\\') || (path.size() >= 2 && path[1] == u':');
}

std::u16string DirectoryOfPath(const std::u16string& path) {
    const size_t separator = path.find_last_of(u"/\\:");
    return separator == std::u16string::npos ? std::u16string() : path.substr(0, separator + 1);
}
