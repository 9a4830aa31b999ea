// Models of every format that the library reads, each with what it gives through the operations.
#include "provider/ProviderTesting.h"

#include "provider/operations/OperationWalk.h"

namespace {

// All models of a folder, each beside the expected text of its walk.
void ExpectTexts(std::u16string_view folder) {
    const std::filesystem::path path = ProviderTestsDirectory + std::u16string(folder);
    size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        std::filesystem::path expected = entry.path();
        expected += ".txt";
        if (!std::filesystem::exists(expected)) {
            continue;
        }
        SCOPED_TRACE(entry.path().string());
        ++count;
        const World world = WalkModel(entry.path().u16string());
        SUTerminate();
        EXPECT_EQ(world.Text, ReadBytes(expected));
    }
    EXPECT_GT(count, 0U);
}

} // namespace

TEST(ProviderModels, GiveWhatTheyHold) {
    ExpectTexts(u"models");
}
