// Writes PNG files with libspng.
#include "picture/PngWriter.h"

#include <cassert>
#include <cstdlib>
#include <memory>

#include <spng.h>

// Chosen by measurement, see docs/performance.md.
constexpr int CompressionLevel = 5;
constexpr int Filters = SPNG_FILTER_CHOICE_SUB | SPNG_FILTER_CHOICE_UP;

constexpr uint8_t ColorTypes[] = {SPNG_COLOR_TYPE_GRAYSCALE, SPNG_COLOR_TYPE_GRAYSCALE_ALPHA,
                                  SPNG_COLOR_TYPE_TRUECOLOR, SPNG_COLOR_TYPE_TRUECOLOR_ALPHA};

static int EncodeTo(spng_ctx* context, spng_ihdr& header, std::span<const uint8_t> pixels) {
    int error = spng_set_option(context, SPNG_ENCODE_TO_BUFFER, 1);
    if (error == 0) {
        error = spng_set_option(context, SPNG_IMG_COMPRESSION_LEVEL, CompressionLevel);
    }
    if (error == 0) {
        error = spng_set_option(context, SPNG_FILTER_CHOICE, Filters);
    }
    if (error == 0) {
        error = spng_set_ihdr(context, &header);
    }
    if (error == 0) {
        error =
            spng_encode_image(context, pixels.data(), pixels.size(), SPNG_FMT_PNG, SPNG_ENCODE_FINALIZE);
    }
    return error;
}

std::vector<uint8_t> EncodePng(std::span<const uint8_t> pixels, uint32_t width, uint32_t height,
                               uint32_t channels, std::string& reason) {
    assert(width > 0 && height > 0 && channels > 0 && channels <= 4);
    assert(pixels.size() == size_t{width} * height * channels);
    const std::unique_ptr<spng_ctx, void (*)(spng_ctx*)> context(spng_ctx_new(SPNG_CTX_ENCODER),
                                                                 spng_ctx_free);
    spng_ihdr header = {.width = width,
                        .height = height,
                        .bit_depth = 8,
                        .color_type = ColorTypes[channels - 1],
                        .compression_method = 0,
                        .filter_method = 0,
                        .interlace_method = SPNG_INTERLACE_NONE};
    int error = context == nullptr ? SPNG_EMEM : EncodeTo(context.get(), header, pixels);
    size_t size = 0;
    std::unique_ptr<uint8_t, void (*)(void*)> png(nullptr, std::free);
    if (error == 0) {
        png.reset(static_cast<uint8_t*>(spng_get_png_buffer(context.get(), &size, &error)));
    }
    if (png == nullptr) {
        reason = std::string("can't be encoded (") + spng_strerror(error) + ")";
        return {};
    }
    return {png.get(), png.get() + size};
}
