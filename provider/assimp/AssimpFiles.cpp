// The files that assimp opens: read whole into memory, never written.
#include "provider/assimp/AssimpFiles.h"

#include "platform/Files.h"
#include "platform/Text.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace {

struct OpenFile {
    aiFile Operations;
    std::vector<uint8_t> Bytes;
    size_t At = 0;
};

OpenFile& FileOf(aiFile* file) {
    return *reinterpret_cast<OpenFile*>(file->UserData);
}

size_t Read(aiFile* file, char* buffer, size_t size, size_t count) {
    OpenFile& open = FileOf(file);
    if (size == 0 || count == 0) {
        return 0;
    }
    count = std::min(count, (open.Bytes.size() - open.At) / size);
    if (count > 0) {
        std::memcpy(buffer, open.Bytes.data() + open.At, size * count);
        open.At += size * count;
    }
    return count;
}

size_t Write(aiFile*, const char*, size_t, size_t) {
    return 0;
}

size_t Tell(aiFile* file) {
    return FileOf(file).At;
}

size_t Size(aiFile* file) {
    return FileOf(file).Bytes.size();
}

void Flush(aiFile*) {
}

aiReturn Seek(aiFile* file, size_t offset, aiOrigin origin) {
    OpenFile& open = FileOf(file);
    size_t from = 0;
    if (origin == aiOrigin_CUR) {
        from = open.At;
    } else if (origin == aiOrigin_END) {
        from = open.Bytes.size();
    }
    // A negative offset arrives as its complement; the sum wraps around to the right place.
    const size_t target = from + offset;
    if (target > open.Bytes.size()) {
        return aiReturn_FAILURE;
    }
    open.At = target;
    return aiReturn_SUCCESS;
}

aiFile* Open(aiFileIO* operations, const char* name, const char* mode) {
    const AssimpFiles& files = *reinterpret_cast<AssimpFiles*>(operations->UserData);
    auto open = std::make_unique<OpenFile>();
    const std::u16string path = name == files.ShownPath ? files.Path : Utf16FromUtf8(name);
    // A model on a server may have its other files there.
    const bool isAllowed = !NamesServerOrDevice(path) || NamesServerOrDevice(files.Path);
    if (mode[0] != 'r' || !isAllowed || !ReadWholeFile(path, open->Bytes)) {
        return nullptr;
    }
    open->Operations = {Read, Write, Tell, Size, Seek, Flush, reinterpret_cast<char*>(open.get())};
    return &open.release()->Operations;
}

void Close(aiFileIO*, aiFile* file) {
    delete &FileOf(file);
}

} // namespace

void PrepareFiles(AssimpFiles& files) {
    files.Operations = {Open, Close, reinterpret_cast<char*>(&files)};
}
