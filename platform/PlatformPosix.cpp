// The POSIX side of the platform layer. Names and output are UTF-8, whatever the locale.
#include "platform/Files.h"
#include "platform/Platform.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

// Converts a path to the form of the system.
std::string SystemPath(const std::u16string& path) {
    std::string name = Utf8FromUtf16(path);
    if (HasDrive(path)) {
        name.erase(0, 2);
    }
    for (char& c : name) {
        if (c == '\\') {
            c = '/';
        }
    }
    return name;
}

// Windows-1252 from 0x80 to 0x9F; the rest of the page is Latin-1. 0 marks the five unassigned bytes.
constexpr std::array<char16_t, 32> Windows1252Upper = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178};

// Returns the absolute name without "." and "..", with links not followed.
std::string SpelledName(const std::string& name) {
    std::error_code error;
    const fs::path absolute = fs::absolute(name, error);
    return (error ? fs::path(name) : absolute).lexically_normal().string();
}

// Returns the absolute name with links followed, part by part from the root: std::filesystem stops at a
// link whose target doesn't exist. A closing separator stays: no file has such a name.
std::string ResolvedName(const std::string& name) {
    constexpr int mostLinks = 40; // the system's own limit
    std::error_code error;
    std::string rest = fs::absolute(name, error).string();
    if (error) {
        return SpelledName(name);
    }
    std::string resolved; // has no links, so ".." removes its last part
    for (int links = 0; !rest.empty();) {
        const std::string part = rest.substr(0, rest.find('/'));
        rest.erase(0, part.size() + 1);
        if (part.empty() || part == ".") {
            continue;
        }
        if (part == "..") {
            resolved.erase(std::min(resolved.rfind('/'), resolved.size()));
            continue;
        }
        const std::string next = std::string(resolved).append("/").append(part);
        const fs::path target = fs::read_symlink(next, error);
        if (!error && ++links <= mostLinks) {
            rest.insert(0, target.string() + "/");
            if (target.is_absolute()) {
                resolved.clear();
            }
        } else if (error == std::errc::invalid_argument || // exists and is not a link
                   error == std::errc::no_such_file_or_directory ||
                   error == std::errc::not_a_directory) {
            resolved = next;
        } else {
            return SpelledName(name);
        }
    }
    return name.ends_with('/') ? resolved + '/' : resolved;
}

// Compares numbers only of files with several links. A file with one link has one name, and on some file
// systems, such as shares and folders of a virtual machine's host, all files have the same number.
bool AreHardLinks(const std::string& a, const std::string& b) {
    struct stat first = {};
    struct stat second = {};
    return stat(a.c_str(), &first) == 0 && stat(b.c_str(), &second) == 0 && first.st_nlink > 1 &&
           second.st_nlink > 1 && first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

char Windows1252FromUnit(char16_t unit) {
    if (unit < 0x80 || (unit >= 0xA0 && unit <= 0xFF)) {
        return static_cast<char>(unit);
    }
    for (size_t i = 0; i < Windows1252Upper.size(); ++i) {
        if (Windows1252Upper[i] == unit) {
            return static_cast<char>(0x80 + i);
        }
    }
    return '?';
}

// Maps size bytes at a multiple of LargePage: maps more and returns what is before and after. Returns
// null if there is no memory.
std::byte* MapAligned(size_t size, int protection) {
    void* const mapped = mmap(nullptr, size + LargePage, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) {
        return nullptr;
    }
    auto* const first = static_cast<std::byte*>(mapped);
    const size_t beyond = reinterpret_cast<uintptr_t>(mapped) % LargePage;
    const size_t before = beyond == 0 ? 0 : LargePage - beyond;
    if (before > 0) {
        munmap(first, before);
    }
    munmap(first + before + size, LargePage - before);
    return first + before;
}

// From this size on a mapping is given large pages. In a smaller one, the unused end of the last page
// would be too large a part.
constexpr size_t SmallestOfLargePages = 4 * LargePage;

// A system without large pages refuses, which changes nothing.
void AskForLargePages([[maybe_unused]] std::byte* bytes, [[maybe_unused]] size_t size) {
#ifdef MADV_HUGEPAGE
    if (size >= SmallestOfLargePages) {
        madvise(bytes, size, MADV_HUGEPAGE);
    }
#endif
}

} // namespace

std::byte* MapMemory(size_t size, size_t& reserved) {
    std::byte* const bytes = MapAligned(size, PROT_READ | PROT_WRITE);
    if (bytes != nullptr) {
        AskForLargePages(bytes, size);
        reserved = size;
    }
    return bytes;
}

bool GrowMapping(std::byte*& bytes, size_t& reserved, size_t former, size_t size,
                 [[maybe_unused]] size_t used) {
#ifdef MREMAP_FIXED
    if (mremap(bytes, former, size, 0) == MAP_FAILED) {
        // To an aligned address, since otherwise each large page would be split.
        std::byte* const target = MapAligned(size, PROT_NONE);
        if (target == nullptr) {
            return false;
        }
        if (mremap(bytes, former, size, MREMAP_MAYMOVE | MREMAP_FIXED, target) == MAP_FAILED) {
            munmap(target, size);
            return false;
        }
        bytes = target;
    }
    AskForLargePages(bytes, size);
#else
    size_t ignored = 0;
    std::byte* const target = MapMemory(size, ignored);
    if (target == nullptr) {
        return false;
    }
    std::copy_n(bytes, used, target);
    munmap(bytes, former);
    bytes = target;
#endif
    reserved = size;
    return true;
}

void ShrinkMapping(std::byte* bytes, size_t& reserved, size_t former, size_t size) {
    munmap(bytes + size, former - size);
    reserved = size;
}

void UnmapMemory(std::byte* bytes, size_t reserved) {
    munmap(bytes, reserved);
}

uint64_t SizeOfStream(std::FILE* stream) {
    struct stat status = {};
    return fstat(fileno(stream), &status) == 0 && S_ISREG(status.st_mode)
               ? static_cast<uint64_t>(status.st_size)
               : 0;
}

std::FILE* OpenForWriting(const std::u16string& path) {
    return std::fopen(SystemPath(path).c_str(), "wb");
}

std::FILE* OpenForReading(const std::u16string& path) {
    return std::fopen(SystemPath(path).c_str(), "rb");
}

uint32_t FileAttributes(const std::u16string& path) {
    struct stat status = {};
    if (stat(SystemPath(path).c_str(), &status) != 0) {
        return InvalidAttributes;
    }
    if (S_ISDIR(status.st_mode)) {
        return DirectoryAttribute;
    }
    return S_ISREG(status.st_mode) ? 0 : DeviceAttribute;
}

uint64_t SizeOfFile(const std::u16string& path) {
    struct stat status = {};
    return stat(SystemPath(path).c_str(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
}

bool NameOneFile(const std::u16string& a, const std::u16string& b) {
    const std::string first = SystemPath(a);
    const std::string second = SystemPath(b);
    return ResolvedName(first) == ResolvedName(second) || AreHardLinks(first, second);
}

bool CreateOneDirectory(const std::u16string& path) {
    constexpr mode_t everybody = 0777; // reduced by the process's umask
    return mkdir(SystemPath(path).c_str(), everybody) == 0;
}

std::string AnsiFromUtf16(std::u16string_view text) {
    std::string result;
    result.reserve(text.size());
    for (const char16_t unit : text) {
        result.push_back(Windows1252FromUnit(unit));
    }
    return result;
}

int PrintToStandardOutput(std::u16string_view text) {
    return PrintBytes(Utf8FromUtf16(text));
}

bool ErrorOutputIsTerminal() {
    return isatty(STDERR_FILENO) != 0;
}
