// Usage: bench-png FILE... Encodes each picture as PNG with levels and filters of libspng, and with
// stb_image_write. Prints a table: seconds of processor time, the least of three runs, and bytes.
#include "picture/PictureReader.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>
#include <iterator>
#include <vector>

#include <spng.h>
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace {

constexpr int Runs = 3;

struct FilterChoice {
    const char* Name;
    int Value;
};

constexpr FilterChoice FilterChoices[] = {{"none", SPNG_FILTER_CHOICE_NONE},
                                          {"up", SPNG_FILTER_CHOICE_UP},
                                          {"sub, up", SPNG_FILTER_CHOICE_SUB | SPNG_FILTER_CHOICE_UP},
                                          {"all", SPNG_FILTER_CHOICE_ALL}};

// Returns the bytes of the PNG file.
size_t EncodeBySpng(const DecodedPicture& picture, int level, int filters) {
    constexpr uint8_t types[] = {SPNG_COLOR_TYPE_GRAYSCALE, SPNG_COLOR_TYPE_GRAYSCALE_ALPHA,
                                 SPNG_COLOR_TYPE_TRUECOLOR, SPNG_COLOR_TYPE_TRUECOLOR_ALPHA};
    spng_ctx* context = spng_ctx_new(SPNG_CTX_ENCODER);
    spng_ihdr header = {picture.Width, picture.Height, 8, types[picture.Channels - 1], 0, 0, 0};
    spng_set_option(context, SPNG_ENCODE_TO_BUFFER, 1);
    spng_set_option(context, SPNG_IMG_COMPRESSION_LEVEL, level);
    spng_set_option(context, SPNG_FILTER_CHOICE, filters);
    spng_set_ihdr(context, &header);
    spng_encode_image(context, picture.Pixels.get(),
                      size_t{picture.Width} * picture.Height * picture.Channels, SPNG_FMT_PNG,
                      SPNG_ENCODE_FINALIZE);
    size_t size = 0;
    int error = 0;
    std::free(spng_get_png_buffer(context, &size, &error));
    spng_ctx_free(context);
    return size;
}

size_t EncodeByStb(const DecodedPicture& picture) {
    int size = 0;
    std::free(stbi_write_png_to_mem(picture.Pixels.get(),
                                    static_cast<int>(picture.Width * picture.Channels),
                                    static_cast<int>(picture.Width), static_cast<int>(picture.Height),
                                    static_cast<int>(picture.Channels), &size));
    return static_cast<size_t>(size);
}

void PrintRow(const char* file, const char* writer, const std::function<size_t()>& encode) {
    double least = 0;
    size_t size = 0;
    for (int run = 0; run < Runs; ++run) {
        const std::clock_t start = std::clock();
        size = encode();
        const double time = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        least = run == 0 ? time : std::min(least, time);
    }
    std::printf("| %s | %s | %.4f | %zu |\n", file, writer, least, size);
}

} // namespace

int main(int argc, char** argv) {
    std::printf("| picture | writer | seconds | bytes |\n|---|---|---|---|\n");
    for (int i = 1; i < argc; ++i) {
        std::ifstream file(argv[i], std::ios::binary);
        const std::vector<char> bytes{std::istreambuf_iterator<char>(file), {}};
        DecodedPicture picture;
        if (const auto fault = DecodePicture(
                {reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}, 0, picture)) {
            std::fprintf(stderr, "%s %s\n", argv[i], FaultWords(*fault, "picture").c_str());
            return 1;
        }
        PrintRow(argv[i], "stb_image_write", [&] { return EncodeByStb(picture); });
        for (const FilterChoice& filter : FilterChoices) {
            for (int level = 1; level <= 9; ++level) {
                const std::string writer = "level " + std::to_string(level) + ", " + filter.Name;
                PrintRow(argv[i], writer.c_str(),
                         [&] { return EncodeBySpng(picture, level, filter.Value); });
            }
        }
    }
}
