// Byte output to standard output, and the reasons of failed calls. The same on every system.
#include "platform/Platform.h"

#include <cerrno>

int FailureReason() {
    return errno != 0 ? errno : EIO;
}

int PrintBytes(std::string_view bytes) {
    errno = 0;
    // Flush even after a failed write: the stream may hold earlier bytes.
    const int writing =
        std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() ? 0 : FailureReason();
    const int flushing = std::fflush(stdout) == 0 ? 0 : FailureReason();
    return writing != 0 ? writing : flushing;
}
