// Writes a file in calls of bounded size.
#include "run/OutputFile.h"

#include "platform/Platform.h"
#include "run/Paths.h"

#include <algorithm>

// The most bytes per call to the stream.
static constexpr uint32_t BytesPerCall = 4096;

// Bytes that the stream buffers.
static constexpr size_t BufferBytes = size_t{1} << 20;

OutputFile::~OutputFile() {
    Close();
}

void OutputFile::Open(const std::u16string& path) {
    Close();
    if (path.size() >= PathLimit) {
        return;
    }
    // Before opening, so that lack of memory truncates no file.
    Buffer = std::make_unique_for_overwrite<char[]>(BufferBytes);
    Stream = OpenForWriting(path);
    if (Stream != nullptr) {
        std::setvbuf(Stream, Buffer.get(), _IOFBF, BufferBytes);
    }
}

bool OutputFile::Write(const void* bytes, uint32_t size) {
    uint32_t written = 0;
    while (Stream != nullptr && written < size) {
        const uint32_t most = std::min(size - written, BytesPerCall);
        const size_t count = std::fwrite(static_cast<const char*>(bytes) + written, 1, most, Stream);
        if (count == 0) {
            break;
        }
        written += static_cast<uint32_t>(count);
        // A call may accept all its bytes although flushing earlier ones fails.
        if (std::ferror(Stream) != 0) {
            return false;
        }
    }
    return written == size;
}

bool OutputFile::Flush() {
    if (Stream == nullptr) {
        return false;
    }
    const bool sent = std::fflush(Stream) == 0 && std::ferror(Stream) == 0;
    std::clearerr(Stream);
    return sent;
}

void OutputFile::Close() {
    if (Stream != nullptr) {
        std::fclose(Stream);
        Stream = nullptr;
    }
    Buffer.reset();
}
