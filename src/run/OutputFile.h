// One stream that a run writes: the log or the scene file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

struct OutputFile {
    std::FILE* Stream = nullptr;    // null while no file is open
    std::unique_ptr<char[]> Buffer; // the stream's; its memory is used as it fills

    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    // Opens a new file, or cuts an existing one to nothing, after closing what is open. On failure, and
    // for a path beyond the limit, the stream is null afterwards.
    void Open(const std::u16string& path);

    // Writes size bytes, which the stream may keep until a later call or Flush. False if they don't all
    // go out, if earlier bytes turn out to be lost, or if no file is open. After a false the file lacks
    // bytes, and more of them would leave a gap.
    bool Write(const void* bytes, uint32_t size);

    // Sends what the stream still buffers to the system. False if that fails, if bytes were lost since
    // the last Flush, or if no file is open. A failure is reported once: what is written next stands or
    // falls by itself.
    bool Flush();

    // Closes the stream, if one is open. What the system says to it is not looked at.
    void Close();
};
