// The 64 operations of the provider, seen from a caller: wrong arguments, texts, pictures and messages.
#include "provider/ProviderTesting.h"

#include "provider/operations/OperationWalk.h"
#include "provider/operations/ProviderState.h"

#include <span>

namespace {

const std::u16string EveryKind = ProviderTestsDirectory + u"models/every-kind.json";

bool IsRelease(const Operation& operation) {
    return operation.Name.ends_with("Release");
}

bool IsUntouched(std::span<const uint8_t> bytes) {
    return std::ranges::all_of(bytes, [](uint8_t byte) { return byte == Untouched; });
}

// A call that succeeds.
Call SoundCall(const World& world, const Operation& operation) {
    return {ArgumentsFor(world, operation).at(0), world.Path};
}

// Handles that no parameter of a kind may accept. gone: of a model that isn't open any more.
std::vector<uint64_t> WrongHandles(const World& world, const World& gone, const std::string& kind) {
    std::vector<uint64_t> wrong = {0, 1, ~uint64_t{0}, 0xDEADBEEFCAFE};
    for (const auto& [known, values] : world.Handles) {
        for (const uint64_t value : values) {
            // An index out of range, another model, and unused bits.
            wrong.insert(wrong.end(),
                         {value ^ 0x1000, value ^ uint64_t{1} << 33, value ^ uint64_t{8} << 52});
            if (known != kind) {
                wrong.push_back(value);
            }
        }
        wrong.push_back(*std::ranges::max_element(values) + 1);
        const bool isOfModel = known != "String" && known != "ImageRep" && known != "TextureWriter";
        const std::vector<uint64_t>& stale = gone.Handles.at(known);
        wrong.insert(wrong.end(), stale.begin(), isOfModel ? stale.end() : stale.begin());
    }
    return wrong;
}

// Lists and texts in arrays for fewer elements than there are, and for more.
void ExpectCountKept(const World& world, const Operation& operation, size_t at) {
    Call call = SoundCall(world, operation);
    EXPECT_TRUE(Succeeds(operation, call));
    const uint64_t all = NumberAt(call, at + 2);
    const uint64_t end = operation.Name == "SUStringGetUTF16" ? 1 : 0; // the NUL
    for (uint64_t count = end; count <= ListLimit; ++count) {
        call.Values[at] = count;
        EXPECT_TRUE(Succeeds(operation, call)) << operation.Name;
        EXPECT_EQ(NumberAt(call, at + 2), std::min(all, count - end)) << operation.Name;
        const size_t written = operation.Parameters[at + 1].Size * std::min(count, all + end);
        EXPECT_TRUE(IsUntouched(std::span(call.Outputs[at + 1]).subspan(written))) << operation.Name;
    }
}

void ExpectWrongArgumentsRefused(const World& world, const World& gone, const Operation& operation) {
    for (size_t at = 0; at < operation.Parameters.size(); ++at) {
        const Parameter& parameter = operation.Parameters[at];
        Call call = SoundCall(world, operation);
        if (parameter.IsPointer) {
            call.Null = at;
            EXPECT_FALSE(Succeeds(operation, call)) << operation.Name << " " << at;
        }
        if (parameter.Plain == ListLimit) {
            ExpectCountKept(world, operation, at);
        }
        // The texture writer of a UV helper is never read.
        if (!parameter.IsRead || (operation.Name == "SUFaceGetUVHelper" && at > 0)) {
            continue;
        }
        call = SoundCall(world, operation);
        for (const uint64_t value : WrongHandles(world, gone, parameter.Kind)) {
            call.Values[at] = value;
            EXPECT_FALSE(Succeeds(operation, call))
                << operation.Name << " " << at << " " << std::hex << value;
        }
    }
}

std::vector<uint8_t> PngOf(const std::vector<uint8_t>& file) {
    ModelPicture picture;
    std::vector<uint8_t> png;
    std::string reason;
    EXPECT_TRUE(LoadPicture(file, picture, reason) && EncodePng(picture, png, reason)) << reason;
    return png;
}

std::vector<uint8_t> PictureFile(std::u16string_view name) {
    std::vector<uint8_t> bytes;
    EXPECT_TRUE(ReadWholeFile(ProviderTestsDirectory + u"pictures/" + std::u16string(name), bytes));
    return bytes;
}

} // namespace

TEST(ProviderBoundary, RefusesWrongArgumentsOfEveryOperation) {
    const World gone = WalkModel(EveryKind);
    SUTerminate();
    const World world = WalkModel(EveryKind);
    for (const Operation& operation : Operations) {
        if (!IsRelease(operation)) {
            ExpectWrongArgumentsRefused(world, gone, operation);
        }
    }
    for (const int32_t id : {0, 2, -1}) {
        const TextureWriterHandle writer = {world.Handles.at("TextureWriter")[0]};
        EXPECT_NE(SUTextureWriterWriteTexture(writer, id, world.Path.c_str(), false), 0);
    }
    // The release of the model comes last, because the others need it.
    for (size_t i = Operations.size(); i-- > 0;) {
        const Operation& operation = Operations[i];
        if (IsRelease(operation)) {
            ExpectWrongArgumentsRefused(world, gone, operation);
            Call call = SoundCall(world, operation);
            EXPECT_TRUE(Succeeds(operation, call)) << operation.Name;
            EXPECT_EQ(NumberAt(call, 0), 0U) << operation.Name;
            // A UV helper holds nothing, so its handle stays.
            EXPECT_EQ(Succeeds(operation, call), operation.Name == "SUUVHelperRelease");
        }
    }
    SUTerminate();
    for (const Operation& operation : Operations) {
        Call call = SoundCall(world, operation);
        const bool takesHandle = std::ranges::any_of(operation.Parameters, &Parameter::IsRead);
        EXPECT_FALSE(takesHandle && Succeeds(operation, call)) << operation.Name;
    }
}

TEST(ProviderBoundary, CutsTextsAtTheLimit) {
    SUInitialize();
    StringHandle string = {0};
    EXPECT_EQ(SUStringCreate(&string), 0);
    EXPECT_EQ(FillString(&string, u"ab\U0001F600c"), 0);
    const std::u16string_view whole = u"ab\U0001F600c";
    for (const auto& [limit, units] : std::vector<std::pair<uint64_t, size_t>>{
             {1, 0}, {2, 1}, {3, 2}, {4, 2}, {5, 4}, {6, 5}, {260, 5}}) {
        std::vector<char16_t> text(limit, u'x'); // exact size, so that a sanitizer finds overruns
        uint64_t length = 99;
        EXPECT_EQ(SUStringGetUTF16(string, limit, text.data(), &length), 0);
        EXPECT_EQ(length, units);
        EXPECT_EQ(std::u16string_view(text.data()), whole.substr(0, units));
    }
    char16_t none = u'x';
    uint64_t length = 0;
    EXPECT_NE(SUStringGetUTF16(string, 0, &none, &length), 0);
    // A released slot is used again; the old handle stays invalid, and nothing of its content is left.
    StringHandle old = string;
    EXPECT_EQ(SUStringRelease(&string), 0);
    EXPECT_EQ(SUStringCreate(&string), 0);
    EXPECT_NE(string.Value, old.Value);
    EXPECT_NE(SUStringRelease(&old), 0);
    EXPECT_EQ(TextOfString(string.Value), "\"\"");
    ImageRepHandle rep = {0};
    uint64_t size[2] = {};
    EXPECT_EQ(SUImageRepCreate(&rep), 0);
    EXPECT_NE(SUImageRepGetPixelDimensions(rep, &size[0], &size[1]), 0);
    SUTerminate();
}

TEST(ProviderBoundary, OpensOneModelAtATime) {
    EXPECT_FALSE(WalkModel(EveryKind).Handles.empty());
    EXPECT_EQ(WalkModel(EveryKind).Text, "another model is still open\n");
    SUTerminate();
    // One line that does nothing to a terminal, whatever the file holds.
    const std::u16string path = WriteTestText(
        u"wrong.json", "{\"orvaneModel\": 1,\n \"a\\n\\u001b\\u007f\\u009b\\u202e\u00e9\": 3}");
    EXPECT_EQ(WalkModel(path).Text, "a     \u00e9: unknown key\n");
}

TEST(ProviderBoundary, WritesPicturesOfAllKindsAsPng) {
    const std::vector<uint8_t> png = PngOf(PictureFile(u"tiles.tga"));
    EXPECT_EQ(PngOf(PictureFile(u"tiles.bmp")), png);
    EXPECT_EQ(PngOf(PictureFile(u"tiles.webp")), png);
    // Sound PNG files stay as they are, also those of other programs.
    EXPECT_EQ(PngOf(PictureFile(u"palette.png")), PictureFile(u"palette.png"));
    // A PNG file with bytes after its end or a wrong checksum is decoded and encoded again.
    std::vector<uint8_t> unsound = png;
    unsound.push_back(0);
    EXPECT_EQ(PngOf(unsound), png);
    unsound = png;
    unsound[29] ^= 1;
    EXPECT_EQ(PngOf(unsound), png);

    // Through the operations, to paths with names beyond ASCII.
    const World world = WalkModel(EveryKind);
    std::vector<uint8_t> written;
    const std::vector<std::string> writers = {"SUTextureWriteToFile", "SUTextureWriterWriteTexture"};
    for (const Operation& operation : Operations) {
        if (std::ranges::find(writers, operation.Name) != writers.end()) {
            Call call = SoundCall(world, operation);
            call.Path += operation.Name;
            EXPECT_TRUE(Succeeds(operation, call));
            EXPECT_TRUE(ReadWholeFile(Utf16FromUtf8(call.Path), written));
            EXPECT_EQ(written, png);
            call.Path += "\\nowhere\\a.png";
            EXPECT_FALSE(Succeeds(operation, call));
        }
    }
    SUTerminate();
}
