// The Windows side of the platform layer: wide-character calls all through.
#include "platform/Platform.h"

#include <cerrno>
#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace {

// wchar_t is a UTF-16 unit on this system.
std::wstring Wide(std::u16string_view text) {
    return {text.begin(), text.end()};
}

// The console behind standard output, or null if that is a file or a pipe.
HANDLE ConsoleOutput() {
    HANDLE handle = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return handle != nullptr && GetConsoleMode(handle, &mode) != 0 ? handle : nullptr;
}

// Room for any name, with its closing NUL.
constexpr DWORD NameUnits = 32768;

// Opens a file or directory only to ask about it, which works also while it is in use. The caller closes
// the handle.
HANDLE OpenToExamine(const std::wstring& name) {
    return CreateFileW(name.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

// The absolute name without "." and "..", by its spelling alone: also without the dots and spaces at the
// end that the system drops.
std::wstring SpelledName(const std::wstring& name) {
    std::wstring spelled(NameUnits, L'\0');
    const DWORD units = GetFullPathNameW(name.c_str(), NameUnits, spelled.data(), nullptr);
    return units != 0 && units < NameUnits ? spelled.substr(0, units) : name;
}

// The name with links followed of what exists; empty on failure.
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

// The absolute name with links followed in the deepest part that can be examined.
std::wstring ResolvedName(const std::wstring& name) {
    constexpr size_t driveUnits = 2; // also the separators before the name of a server
    const std::wstring spelled = SpelledName(name);
    for (size_t length = spelled.size(); length > driveUnits;) {
        std::wstring found = FinalName(spelled.substr(0, length));
        if (!found.empty()) {
            if (length < spelled.size() && found.back() != L'\\') {
                found.push_back(L'\\');
            }
            return found + spelled.substr(length);
        }
        // Separators stay in front: without one, a drive stands for the directory that is current on it.
        const size_t separator = spelled.rfind(L'\\', length - 2);
        length = separator == spelled.npos ? 0 : separator + 1;
    }
    return spelled;
}

// False if there is nothing of this name.
bool Examine(const std::wstring& name, BY_HANDLE_FILE_INFORMATION& information) {
    HANDLE file = OpenToExamine(name);
    if (file == INVALID_HANDLE_VALUE) {
        return false;
    }
    const BOOL isKnown = GetFileInformationByHandle(file, &information);
    CloseHandle(file);
    return isKnown != 0;
}

// A file with one link has one name. Its number adds nothing then, and can be wrong: on some file
// systems, such as shares and folders of a virtual machine's host, all files have the same number.
bool AreHardLinks(const std::wstring& a, const std::wstring& b) {
    BY_HANDLE_FILE_INFORMATION first = {};
    BY_HANDLE_FILE_INFORMATION second = {};
    return Examine(a, first) && Examine(b, second) && first.nNumberOfLinks > 1 &&
           second.nNumberOfLinks > 1 && first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
           first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

} // namespace

std::FILE* OpenForWriting(const std::u16string& path) {
    return _wfopen(Wide(path).c_str(), L"wb");
}

std::FILE* OpenForReading(const std::u16string& path) {
    return _wfopen(Wide(path).c_str(), L"rb");
}

uint32_t FileAttributes(const std::u16string& path) {
    return GetFileAttributesW(Wide(path).c_str());
}

bool NameOneFile(const std::u16string& a, const std::u16string& b) {
    const std::wstring first = Wide(a);
    const std::wstring second = Wide(b);
    return CompareStringOrdinal(ResolvedName(first).c_str(), -1, ResolvedName(second).c_str(), -1,
                                TRUE) == CSTR_EQUAL ||
           AreHardLinks(first, second);
}

bool CreateOneDirectory(const std::u16string& path) {
    return _wmkdir(Wide(path).c_str()) == 0;
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
    // As bytes: in text mode the CR LF of a line would become CR CR LF.
    _setmode(_fileno(stdout), _O_BINARY);
    return PrintBytes(Utf8FromUtf16(text));
}
