// Feeds the files of a folder to a fuzz target in builds without a fuzzer: each whole, truncated at many
// places, and with some flipped bits.
#include "FuzzInput.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

int main(int argc, char** argv) {
    constexpr size_t cuts = 40; // of each file
    constexpr int flips = 200;  // likewise
    std::minstd_rand random(1); // the same numbers in every build
    size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(argc == 2 ? argv[1] : "")) {
        std::ifstream file(entry.path(), std::ios::binary);
        const std::vector<char> content{std::istreambuf_iterator<char>(file), {}};
        for (size_t cut = 0; cut <= cuts; ++cut) {
            // Of exact size, so that a sanitizer finds reads past the end.
            const std::vector<uint8_t> bytes(content.begin(),
                                             content.begin() + ptrdiff_t(content.size() * cut / cuts));
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        }
        for (int flip = 0; flip < flips && !content.empty(); ++flip) {
            std::vector<uint8_t> bytes(content.begin(), content.end());
            for (int bits = flip % 3; bits >= 0; --bits) {
                bytes[random() % bytes.size()] ^= static_cast<uint8_t>(1U << random() % 8);
            }
            LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
        }
        ++files;
    }
    std::printf("%zu files\n", files);
    return files == 0 ? 1 : 0;
}
