// Reads and writes whole files through the platform's streams, and splits paths. The same on every
// system.
#include "platform/Files.h"

#include "platform/Platform.h"

#include <algorithm>
#include <cerrno>
#include <memory>

namespace {

// Bytes per read.
constexpr size_t ReadStep = size_t{1} << 20;

// Where the last component of a path begins.
size_t ComponentStart(std::u16string_view path) {
    const size_t separator = path.find_last_of(u"/\\");
    if (separator != std::u16string_view::npos) {
        return separator + 1;
    }
    return HasDrive(path) ? 2 : 0;
}

void Resize(std::vector<uint8_t>& bytes, size_t size) {
    bytes.resize(size);
}

void Resize(LargeArray<uint8_t>& bytes, size_t size) {
    bytes.Resize(size);
}

template <class Bytes> bool ReadFile(const std::u16string& path, Bytes& bytes, size_t mostBytes) {
    // Before opening, because opening a pipe without a writer blocks.
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
    // One byte more than the file has now, to see its end without a second step.
    const uint64_t stated = std::min<uint64_t>(SizeOfStream(file.get()), mostBytes) + 1;
    size_t step = stated > 1 && stated < SIZE_MAX ? static_cast<size_t>(stated) : ReadStep;
    size_t size = 0;
    for (size_t count = step; count == step && size <= mostBytes;) {
        step = size == 0 ? step : ReadStep;
        Resize(bytes, size + step);
        count = std::fread(&bytes[size], 1, step, file.get());
        size += count;
    }
    Resize(bytes, size);
    return std::ferror(file.get()) == 0 && size <= mostBytes;
}

} // namespace

bool ReadWholeFile(const std::u16string& path, std::vector<uint8_t>& bytes, size_t mostBytes) {
    return ReadFile(path, bytes, mostBytes);
}

bool ReadWholeFile(const std::u16string& path, LargeArray<uint8_t>& bytes, size_t mostBytes) {
    return ReadFile(path, bytes, mostBytes);
}

int WriteWholeFile(const std::u16string& path, std::span<const uint8_t> bytes) {
    errno = 0;
    std::FILE* const file = OpenForWriting(path);
    if (file == nullptr) {
        return FailureReason();
    }
    // Not every system's fclose reports buffered bytes that can't be written.
    const bool isWritten =
        (bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size()) &&
        std::fflush(file) == 0;
    const int writing = isWritten ? 0 : FailureReason();
    const int closing = std::fclose(file) == 0 ? 0 : FailureReason();
    return writing != 0 ? writing : closing;
}

bool HasDrive(std::u16string_view path) {
    return path.size() >= 2 && path[1] == u':' &&
           ((path[0] >= u'A' && path[0] <= u'Z') || (path[0] >= u'a' && path[0] <= u'z'));
}

std::u16string LastComponent(std::u16string_view path) {
    return std::u16string(path.substr(ComponentStart(path)));
}

std::u16string DirectoryPart(std::u16string_view path) {
    return std::u16string(path.substr(0, ComponentStart(path)));
}

bool NamesServerOrDevice(std::u16string_view name) {
    const auto isSeparator = [](char16_t unit) {
        return unit == u'/' || unit == u'\\';
    };
    return name.size() >= 2 && isSeparator(name[0]) && (isSeparator(name[1]) || name[1] == u'?');
}

std::u16string PathIn(std::u16string_view directory, std::u16string_view name) {
    if (NamesServerOrDevice(name)) {
        return {};
    }
    const bool isAbsolute = name.starts_with(u'/') || name.starts_with(u'\\') || HasDrive(name);
    return isAbsolute ? std::u16string(name) : std::u16string(directory).append(name);
}
