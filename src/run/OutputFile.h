// An output file of a run: the log or the scene file.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

struct OutputFile {
    std::FILE* Stream = nullptr;    // null while no file is open
    std::unique_ptr<char[]> Buffer; // of the stream; memory is touched as it fills

    OutputFile() = default;
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;
    ~OutputFile();

    // Closes the open file, then creates a file or truncates an existing one. On failure, and for a path
    // beyond PathLimit, the stream is null.
    void Open(const std::u16string& path);

    // Writes size bytes, which the stream may buffer until a later call or Flush. Returns false if not
    // all are written, if earlier bytes are lost, or if no file is open. The file then lacks bytes, and
    // further writes leave a gap.
    bool Write(const void* bytes, uint32_t size);

    // Passes buffered bytes to the system. Returns false if that fails, if bytes were lost since the
    // last Flush, or if no file is open. A failure is reported once and doesn't affect later writes.
    bool Flush();

    // Closes the stream, if one is open. Errors are ignored.
    void Close();
};
