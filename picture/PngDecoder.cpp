// Decodes PNG files with libspng. The library gets only the chunks that the pixels depend on: others, of
// whatever size and content, neither fail nor cost memory.
#include "picture/Decoders.h"
#include "picture/PictureReader.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

#include <spng.h>
#include <zlib.h>

constexpr size_t MagicSize = 8;
// Length, type and checksum of a chunk, 4 bytes each.
constexpr size_t ChunkOverhead = 12;

namespace {

using Context = std::unique_ptr<spng_ctx, void (*)(spng_ctx*)>;

struct PngChunk {
    std::string_view Type;
    std::span<const uint8_t> Bytes; // all of it, with length and checksum
};

uint32_t BigEndian(std::span<const uint8_t> bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

// Removes the first chunk of a file's rest. Returns false if that ends before the chunk does.
bool TakeChunk(std::span<const uint8_t>& rest, PngChunk& chunk) {
    if (rest.size() < ChunkOverhead || BigEndian(rest) > rest.size() - ChunkOverhead) {
        return false;
    }
    chunk.Bytes = rest.first(ChunkOverhead + BigEndian(rest));
    chunk.Type = {reinterpret_cast<const char*>(rest.data()) + 4, 4};
    rest = rest.subspan(chunk.Bytes.size());
    return true;
}

bool HasRightChecksum(const PngChunk& chunk) {
    const auto checked = chunk.Bytes.subspan(4, chunk.Bytes.size() - 8);
    return crc32_z(0, checked.data(), checked.size()) == BigEndian(chunk.Bytes.last(4));
}

// The parts of a file that the pixels depend on, as one stream.
struct PngSource {
    std::vector<std::span<const uint8_t>> Parts;
    size_t Part = 0; // the first one with bytes that were not read yet
    bool HasEnd = false;
};

PngSource SourceOf(std::span<const uint8_t> bytes) {
    PngSource source;
    source.Parts.push_back(bytes.first(MagicSize));
    std::span<const uint8_t> rest = bytes.subspan(MagicSize);
    for (PngChunk chunk; !source.HasEnd && TakeChunk(rest, chunk);) {
        const bool isCritical = (chunk.Type[0] & 0x20) == 0; // in upper case
        std::span<const uint8_t>& last = source.Parts.back();
        if (!isCritical && chunk.Type != "tRNS") {
            continue;
        }
        if (last.data() + last.size() == chunk.Bytes.data()) {
            last = {last.data(), last.size() + chunk.Bytes.size()};
        } else {
            source.Parts.push_back(chunk.Bytes);
        }
        source.HasEnd = chunk.Type == "IEND";
    }
    return source;
}

int ReadSource(spng_ctx* /*context*/, void* user, void* to, size_t size) {
    PngSource& source = *static_cast<PngSource*>(user);
    auto* bytes = static_cast<uint8_t*>(to);
    while (size > 0) {
        if (source.Part == source.Parts.size()) {
            return SPNG_IO_EOF;
        }
        std::span<const uint8_t>& part = source.Parts[source.Part];
        const size_t count = std::min(size, part.size());
        bytes = std::copy_n(part.data(), count, bytes);
        size -= count;
        part = part.subspan(count);
        source.Part += part.empty() ? 1 : 0;
    }
    return 0;
}

PictureFault FaultOf(PictureFaultKind kind, int error) {
    return {kind, spng_strerror(error)};
}

uint32_t OwnChannels(const spng_ihdr& header, bool hasTransparency) {
    switch (header.color_type) {
    case SPNG_COLOR_TYPE_GRAYSCALE:
        return hasTransparency ? 2 : 1;
    case SPNG_COLOR_TYPE_GRAYSCALE_ALPHA:
        return 2;
    case SPNG_COLOR_TYPE_TRUECOLOR_ALPHA:
        return RgbaChannels;
    default:
        return hasTransparency ? RgbaChannels : 3;
    }
}

} // namespace

std::optional<PictureFault> DecodePng(std::span<const uint8_t> bytes, uint32_t channels,
                                      DecodedPicture& picture) {
    PngSource source = SourceOf(bytes);
    const Context context(spng_ctx_new(0), spng_ctx_free);
    spng_ihdr header = {};
    // Wrong checksums are accepted, see IsSoundPng.
    int error =
        context == nullptr ? SPNG_EMEM : spng_set_crc_action(context.get(), SPNG_CRC_USE, SPNG_CRC_USE);
    if (error == 0) {
        error = spng_set_png_stream(context.get(), ReadSource, &source);
    }
    if (error == 0) {
        error = spng_get_ihdr(context.get(), &header);
    }
    if (error != 0) {
        return FaultOf(PictureFaultKind::UnknownFile, error);
    }
    if (!HasAllowedSize(header.width, header.height)) {
        return PictureFault{PictureFaultKind::TooManyPixels, {}};
    }
    if (!source.HasEnd) {
        return PictureFault{PictureFaultKind::Undecodable, PrematureEnd};
    }
    spng_trns transparency = {};
    error = spng_get_trns(context.get(), &transparency);
    if (error != 0 && error != SPNG_ECHUNKAVAIL) {
        return FaultOf(PictureFaultKind::Undecodable, error);
    }
    const uint32_t wanted = channels != 0 ? channels : OwnChannels(header, error == 0);
    // The library reduces not every kind of gray.
    const uint32_t decoded = wanted == 3 ? 3 : RgbaChannels;
    if (auto fault = StartPicture(header.width, header.height, decoded, picture)) {
        return fault;
    }
    error = spng_decode_image(context.get(), picture.Pixels.get(),
                              size_t{header.width} * header.height * decoded,
                              decoded == 3 ? SPNG_FMT_RGB8 : SPNG_FMT_RGBA8, SPNG_DECODE_TRNS);
    if (error != 0) {
        return FaultOf(PictureFaultKind::Undecodable, error);
    }
    if (wanted < decoded) {
        ReduceChannels(wanted, picture);
    }
    return std::nullopt;
}

bool IsSoundPng(std::span<const uint8_t> bytes) {
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (!text.starts_with("\x89PNG\r\n\x1A\n")) {
        return false;
    }
    std::span<const uint8_t> rest = bytes.subspan(MagicSize);
    PngChunk chunk;
    while (TakeChunk(rest, chunk) && HasRightChecksum(chunk)) {
        if (chunk.Type == "IEND") {
            return rest.empty();
        }
    }
    return false;
}
