// Shared by the fuzz targets: assertions, values from the input's bytes, and a folder with a picture.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// Must hold for every input.
inline void Expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

// The input as a sequence of values; zeros after its end.
struct FuzzInput {
    std::span<const uint8_t> Bytes;

    template <class Type> Type Take() {
        Type value = {};
        const size_t size = std::min(sizeof value, Bytes.size());
        std::copy_n(Bytes.data(), size, reinterpret_cast<uint8_t*>(&value));
        Bytes = Bytes.subspan(size);
        return value;
    }
    // A value below end, which is at most 256.
    uint32_t Below(uint32_t end) {
        return Take<uint8_t>() % end;
    }
};

// A folder, with its closing separator, that holds "p.png" and nothing else.
const std::u16string& PictureFolder();
