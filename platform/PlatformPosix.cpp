// The POSIX side of the platform layer. Names and output are UTF-8 whatever the locale says.
#include "platform/Files.h"
#include "platform/Platform.h"

#include <array>
#include <filesystem>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

// The name under which the system knows a path.
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

// Where a path leads whose last component may be a link, also to what doesn't exist yet.
fs::path LinkTarget(fs::path path) {
    constexpr int mostLinks = 40; // the system's own limit
    std::error_code error;
    for (int i = 0; i < mostLinks && fs::is_symlink(path, error); ++i) {
        path = path.parent_path() / fs::read_symlink(path, error);
    }
    return path;
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

} // namespace

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

bool NameOneFile(const std::u16string& a, const std::u16string& b) {
    const fs::path first = LinkTarget(SystemPath(a));
    const fs::path second = LinkTarget(SystemPath(b));
    std::error_code error;
    return fs::equivalent(first, second, error) ||
           (first.filename() == second.filename() &&
            fs::equivalent(first.parent_path() / ".", second.parent_path() / ".", error));
}

bool CreateOneDirectory(const std::u16string& path) {
    constexpr mode_t everybody = 0777; // less what the process's mask takes away
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
