// The Windows side of the platform layer, with wide-character calls only.
#include "platform/Platform.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

namespace {

// wchar_t is a UTF-16 unit on this system.
std::wstring Wide(std::u16string_view text) {
    return {text.begin(), text.end()};
}

// Returns the console of standard output, or null if that is a file or a pipe.
HANDLE ConsoleOutput() {
    HANDLE handle = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return handle != nullptr && GetConsoleMode(handle, &mode) != 0 ? handle : nullptr;
}

// UTF-16 units of the longest name, closing NUL included.
constexpr DWORD NameUnits = 32768;

// Opens a file or directory for queries only, which works even while it is in use. The caller closes the
// handle.
HANDLE OpenToExamine(const std::wstring& name) {
    return CreateFileW(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

// Returns the absolute name without "." and "..", with links not followed. Trailing dots and spaces are
// dropped, as the system does.
std::wstring SpelledName(const std::wstring& name) {
    std::wstring spelled(NameUnits, L'\0');
    const DWORD units = GetFullPathNameW(name.c_str(), NameUnits, spelled.data(), nullptr);
    return units != 0 && units < NameUnits ? spelled.substr(0, units) : name;
}

// Returns the name to pass to the system: a path that is too long for it in this form gets the prefix
// that lifts the limit, and must then be absolute.
std::wstring SystemName(std::u16string_view path) {
    // Shorter than the limit for files, because names of directories leave room for a file's name of 12
    // units.
    constexpr size_t limit = MAX_PATH - 12;
    const std::wstring name = Wide(path);
    const std::wstring spelled = SpelledName(name);
    const std::wstring_view server = L"\\\\";
    if (spelled.size() < limit || spelled.starts_with(LR"(\\?\)") || spelled.starts_with(LR"(\\.\)")) {
        return name;
    }
    return spelled.starts_with(server) ? LR"(\\?\UNC\)" + spelled.substr(server.size())
                                       : LR"(\\?\)" + spelled;
}

// Returns the name of an existing file with links followed; empty on failure.
std::wstring FinalName(const std::wstring& name) {
    std::wstring found(NameUnits, L'\0');
    HANDLE file = OpenToExamine(name);
    if (file == INVALID_HANDLE_VALUE) {
        return {};
    }
    const DWORD units =
        GetFinalPathNameByHandleW(file, found.data(), NameUnits, FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    CloseHandle(file);
    found.resize(units < NameUnits ? units : 0);
    return found;
}

// Returns the absolute name with links followed in the longest part that can be examined.
std::wstring ResolvedName(const std::wstring& name) {
    constexpr size_t driveUnits = 2; // or the separators before a server name
    const std::wstring spelled = SpelledName(name);
    for (size_t length = spelled.size(); length > driveUnits;) {
        std::wstring found = FinalName(spelled.substr(0, length));
        if (!found.empty()) {
            if (length < spelled.size() && found.back() != L'\\') {
                found.push_back(L'\\');
            }
            return found + spelled.substr(length);
        }
        // The front part keeps its separator: a drive without one means its current directory.
        const size_t separator = spelled.rfind(L'\\', length - 2);
        length = separator == spelled.npos ? 0 : separator + 1;
    }
    return spelled;
}

// Returns false if the file can't be examined.
bool Examine(const std::wstring& name, BY_HANDLE_FILE_INFORMATION& information) {
    HANDLE file = OpenToExamine(name);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const BOOL isKnown = GetFileInformationByHandle(file, &information);
    CloseHandle(file);
    return isKnown != 0;
}

// Compares numbers only of files with several links. A file with one link has one name, and on some file
// systems, such as shares and folders of a virtual machine's host, all files have the same number.
bool AreHardLinks(const std::wstring& a, const std::wstring& b) {
    BY_HANDLE_FILE_INFORMATION first = {};
    BY_HANDLE_FILE_INFORMATION second = {};
    return Examine(a, first) && Examine(b, second) && first.nNumberOfLinks > 1 &&
           second.nNumberOfLinks > 1 && first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

} // namespace

// Addresses taken for each byte in use. Growing within them copies nothing, and addresses alone cost no
// memory.
static constexpr size_t ReservedTimes = 16;

std::byte* MapMemory(size_t size, size_t& reserved) {
    for (size_t times = ReservedTimes; times > 0; times /= 4) {
        void* const bytes = VirtualAlloc(nullptr, size * times, MEM_RESERVE, PAGE_READWRITE);
        if (bytes == nullptr) {
            continue;
        }
        if (VirtualAlloc(bytes, size, MEM_COMMIT, PAGE_READWRITE) != nullptr) {
            reserved = size * times;
            return static_cast<std::byte*>(bytes);
        }
        VirtualFree(bytes, 0, MEM_RELEASE);
    }
    return nullptr;
}

bool GrowMapping(std::byte*& bytes, size_t& reserved, size_t former, size_t size, size_t used) {
    if (size <= reserved) {
        return VirtualAlloc(bytes + former, size - former, MEM_COMMIT, PAGE_READWRITE) != nullptr;
    }
    std::byte* const target = MapMemory(size, reserved);
    if (target == nullptr) {
        return false;
    }
    std::copy_n(bytes, used, target);
    VirtualFree(bytes, 0, MEM_RELEASE);
    bytes = target;
    return true;
}

void ShrinkMapping(std::byte* bytes, size_t&, size_t former, size_t size) {
    // Keeps the addresses.
    VirtualFree(bytes + size, former - size, MEM_DECOMMIT);
}

void UnmapMemory(std::byte* bytes, size_t) {
    VirtualFree(bytes, 0, MEM_RELEASE);
}

uint64_t SizeOfStream(std::FILE* stream) {
    struct _stat64 status = {};
    return _fstat64(_fileno(stream), &status) == 0 && (status.st_mode & _S_IFREG) != 0
               ? static_cast<uint64_t>(status.st_size)
               : 0;
}

std::FILE* OpenForWriting(const std::u16string& path) {
    return _wfopen(SystemName(path).c_str(), L"wb");
}

std::FILE* OpenForReading(const std::u16string& path) {
    return _wfopen(SystemName(path).c_str(), L"rb");
}

uint32_t FileAttributes(const std::u16string& path) {
    // Names such as CON and AUX.png are devices in every directory. Opened, they can wait forever.
    return SpelledName(Wide(path)).starts_with(LR"(\\.\)")
               ? DeviceAttribute
               : GetFileAttributesW(SystemName(path).c_str());
}

uint64_t SizeOfFile(const std::u16string& path) {
    BY_HANDLE_FILE_INFORMATION information = {};
    constexpr int bitsOfLow = 32;
    return Examine(SystemName(path), information)
               ? uint64_t{information.nFileSizeHigh} << bitsOfLow | information.nFileSizeLow
               : 0;
}

bool NameOneFile(const std::u16string& a, const std::u16string& b) {
    const std::wstring first = Wide(a);
    const std::wstring second = Wide(b);
    return CompareStringOrdinal(ResolvedName(first).c_str(), -1, ResolvedName(second).c_str(), -1,
                                TRUE) == CSTR_EQUAL ||
           AreHardLinks(first, second);
}

bool CreateOneDirectory(const std::u16string& path) {
    return _wmkdir(SystemName(path).c_str()) == 0;
}

std::string AnsiFromUtf16(std::u16string_view text) {
    const std::wstring wide = Wide(text);
    const auto units = static_cast<int>(wide.size());
    const int size = WideCharToMultiByte(CP_ACP, 0, wide.data(), units, nullptr, 0, nullptr, nullptr);
    std::string bytes(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_ACP, 0, wide.data(), units, bytes.data(), size, nullptr, nullptr);
    return bytes;
}

int PrintToStandardOutput(std::u16string_view text) {
    HANDLE console = ConsoleOutput();
    if (console != nullptr) {
        DWORD written = 0;
        const bool printed = WriteConsoleW(console, Wide(text).c_str(), static_cast<DWORD>(text.size()),
                                           &written, nullptr) != 0;
        return printed && written == text.size() ? 0 : EIO;
    }
    // Binary, since text mode would turn CR LF into CR CR LF.
    _setmode(_fileno(stdout), _O_BINARY);
    return PrintBytes(Utf8FromUtf16(text));
}

bool ErrorOutputIsTerminal() {
    HANDLE handle = GetStdHandle(STD_ERROR_HANDLE);
    DWORD mode = 0;
    return handle != nullptr && GetConsoleMode(handle, &mode) != 0;
}
