// Feeds the files of a folder to a fuzz target, each whole and truncated at many places, in builds
// without a fuzzer.
#include "FuzzInput.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

int main(int argc, char** argv) {
    constexpr size_t cuts = 40; // of each file
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
        ++files;
    }
    std::printf("%zu files\n", files);
    return files == 0 ? 1 : 0;
}
