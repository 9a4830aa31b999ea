// The decoders of picture files: what they accept, the pixels they give, and their limits.
//
// The samples were made with Pillow, the PNG files chunk by chunk. All show four squares of 8 by 8
// pixels. Two JPEG files lost or got Adobe's marker afterwards; the YCCK file is a CMYK file of such
// values whose marker was changed; turned.jpg is progressive and states a turn by 90 degrees as EXIF
// data; interlaced.png has a broken colour profile and a wrong checksum.
#include "picture/PictureReader.h"

#include "support/Files.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <string>

namespace {

const std::filesystem::path Samples = std::filesystem::path(ORVANE_TESTS_DIR) / "picture/samples";

// The words of the fault; none if the file is decoded. Its bytes end where their memory ends, so that a
// sanitizer finds reads past them.
std::string FaultOf(const std::string& file, uint32_t channels, DecodedPicture& picture) {
    const std::unique_ptr<uint8_t[]> bytes(new uint8_t[file.size()]);
    std::ranges::copy(file, bytes.get());
    const auto fault = DecodePicture({bytes.get(), file.size()}, channels, picture);
    return fault ? FaultWords(*fault, "known") : "";
}

struct Sample {
    const char* File;
    uint32_t Channels;
    int Tolerance; // of a channel, in the files that lose detail
    uint32_t Edge; // pixels at the edges of the squares that they blur
    // Red, green, blue and alpha of the squares, row by row.
    std::array<uint32_t, 4> Squares;
};

constexpr std::array<uint32_t, 4> Grays = {0x000000FF, 0x555555FF, 0xAAAAAAFF, 0xFFFFFFFF};
constexpr std::array<uint32_t, 4> ClearGrays = {0x000000FF, 0x555555FF, 0xAAAAAAFF, 0xFFFFFF00};
constexpr std::array<uint32_t, 4> Colors = {0xFF0000FF, 0x00FF00FF, 0x0000FFFF, 0x808080FF};
constexpr std::array<uint32_t, 4> ClearColors = {0xFF0000FF, 0x00FF00FF, 0x0000FFFF, 0x80808000};

const Sample AllSamples[] = {
    {"gray16.png", 1, 0, 0, Grays},
    {"gray2-clear.png", 2, 0, 0, ClearGrays},
    {"gray-alpha.png", 2, 0, 0, ClearGrays},
    {"gray-alpha16.png", 2, 0, 0, ClearGrays},
    {"rgb16-clear.png", 4, 0, 0, ClearColors},
    {"palette4-clear.png", 4, 0, 0, ClearColors},
    {"interlaced.png", 3, 0, 0, Colors},
    {"turned.jpg", 3, 2, 2, Colors},
    {"cmyk.jpg", 3, 1, 0, Colors},
    {"adobe-cmyk.jpg", 3, 1, 0, Colors},
    {"adobe-ycck.jpg", 3, 2, 0, Colors},
    {"adobe-rgb.jpg", 3, 1, 0, Colors},
    {"lossy.webp", 3, 4, 2, Colors},
    {"lossless.webp", 3, 0, 0, Colors},
    {"lossy-alpha.webp", 4, 4, 2, ClearColors},
};

void ExpectSquares(const Sample& sample, const DecodedPicture& picture) {
    const uint8_t* channel = picture.Pixels.get();
    for (uint32_t pixel = 0; pixel < 256; ++pixel) {
        const uint32_t x = pixel % 16;
        const uint32_t y = pixel / 16;
        const bool isEdge =
            std::min(x % 8, y % 8) < sample.Edge || std::max(x % 8, y % 8) >= 8 - sample.Edge;
        for (uint32_t i = 0; i < picture.Channels; ++i) {
            const uint32_t place = picture.Channels == 2 && i == 1 ? 3 : i; // alpha
            const uint32_t value = sample.Squares.at(y / 8 * 2 + x / 8) >> (24 - 8 * place) & 255;
            ASSERT_TRUE(isEdge || std::abs(int(*channel) - int(value)) <= sample.Tolerance)
                << x << " " << y << " " << i << ": " << int{*channel} << " instead of " << value;
            ++channel;
        }
    }
}

} // namespace

TEST(Picture, DecodesEveryKind) {
    for (const Sample& sample : AllSamples) {
        SCOPED_TRACE(sample.File);
        const std::string file = ReadBytes(Samples / sample.File);
        DecodedPicture picture;
        for (const uint32_t channels : {0U, 4U}) {
            ASSERT_EQ(FaultOf(file, channels, picture), "");
            ASSERT_TRUE(picture.Width == 16 && picture.Height == 16);
            EXPECT_EQ(picture.Channels, channels == 0 ? sample.Channels : channels);
            ExpectSquares(sample, picture);
        }
        // Not a byte is missing unnoticed.
        for (const size_t cut : {size_t{1}, file.size() / 4}) {
            const std::string words = FaultOf(file.substr(0, file.size() - cut), 0, picture);
            EXPECT_TRUE(words.starts_with("can't be decoded (")) << cut << words;
        }
    }
}

TEST(Picture, ReportsFaultsInTheWordsOfTheLibraries) {
    constexpr const char* tooLarge = "has too many pixels";
    // Bytes written over those of a file, at a distance from the first occurrence of a text.
    const struct {
        const char* File;
        std::string_view Text;
        size_t At;
        std::string_view Bytes;
        const char* Words;
    } changes[] = {
        {"gray16.png", "IDAT", 4, "y", "can't be decoded (IDAT stream error)"},
        {"turned.jpg", "\xFF\xDA", 5, "\t", "can't be decoded (Invalid component ID 9 in SOS)"},
        {"lossless.webp", "VP8L", 20, "x", "can't be decoded (bitstream error)"},
        {"gray16.png", "IHDR", 13, "\1", "is not a known file that can be decoded (invalid color type)"},
        // 32769 pixels, and more than a library's own limit.
        {"gray16.png", "IHDR", 4, {"\0\0\x80\1", 4}, tooLarge},
        {"cmyk.jpg", "\xFF\xC0", 5, "\x80\1", tooLarge},
        {"cmyk.jpg", "\xFF\xC0", 7, "\xFF\xFF", tooLarge},
    };
    DecodedPicture picture;
    for (const auto& [name, text, at, bytes, words] : changes) {
        std::string file = ReadBytes(Samples / name);
        file.replace(file.find(text) + at, bytes.size(), bytes);
        EXPECT_EQ(FaultOf(file, 0, picture), words) << name;
    }
    EXPECT_TRUE(HasAllowedSize(32768, 4096) && !HasAllowedSize(4097, 32768));
    // The last scan of a progressive file, again and again.
    std::string file = ReadBytes(Samples / "turned.jpg");
    const std::string scan = file.substr(file.rfind("\xFF\xDA"));
    for (int i = 0; i < 100; ++i) {
        file.replace(file.size() - 2, 2, scan);
    }
    EXPECT_EQ(FaultOf(file, 0, picture), "can't be decoded (more than 100 scans)");
}
