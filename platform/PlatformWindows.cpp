// The Windows side of the platform layer: wide-character calls all through.
#include "platform/Platform.h"

#include <cerrno>
#include <fcntl.h>
#include <filesystem>
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
    namespace fs = std::filesystem;
    // As absolute paths they are without the dots and spaces at the end that the system drops.
    std::error_code error;
    const fs::path first = fs::absolute(Wide(a), error);
    const fs::path second = fs::absolute(Wide(b), error);
    return fs::equivalent(first, second, error) ||
           (CompareStringOrdinal(first.filename().c_str(), -1, second.filename().c_str(), -1, TRUE) ==
                CSTR_EQUAL &&
            fs::equivalent(first.parent_path() / ".", second.parent_path() / ".", error));
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
