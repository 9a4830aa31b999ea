// What the fuzz targets share: claims, small readings from the input's bytes, and a folder with a
// picture.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// A claim about any input whatever.
inline void Expect(bool holds) {
    if (!holds) {
        std::abort();
    }
}

// The input as a row of values; zeros behind its end.
struct FuzzInput {
    std::span<const uint8_t> Bytes;

    template <class Type> Type Take() {
        Type value = {};
        const size_t size = std::min(sizeof value, Bytes.size());
        std::copy_n(Bytes.data(), size, reinterpret_cast<uint8_t*>(&value));
        Bytes = Bytes.subspan(size);
        return value;
    }
    // Below a bound of at most 256.
    uint32_t Below(uint32_t end) {
        return Take<uint8_t>() % end;
    }
};

// A folder, with its closing separator, that holds "p.png" and nothing else.
const std::u16string& PictureFolder();
