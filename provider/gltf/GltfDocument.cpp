// Splits a glTF file. tinygltf reads the records. It trusts what the document states about buffers and
// pictures, so it gets the document without them.
#include "provider/gltf/GltfDocument.h"

#include "platform/Bytes.h"
#include "platform/Files.h"
#include "platform/Text.h"
#include "provider/gltf/Uri.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>

constexpr uint32_t JsonChunk = 0x4E4F534A;   // "JSON"
constexpr uint32_t BinaryChunk = 0x004E4942; // "BIN"
constexpr uint32_t GlbVersion = 2;
constexpr size_t GlbHeaderSize = 12;
constexpr size_t ChunkHeaderSize = 8;

// Hidden from tinygltf: bytes, and members that are not used here.
constexpr std::array<std::string_view, 7> HiddenMembers = {"buffers", "images",   "animations", "skins",
                                                           "cameras", "samplers", "extensions"};

// Extensions that a document may require. Names that end in an underscore are prefixes.
constexpr std::array<std::string_view, 9> KnownExtensions = {
    "KHR_texture_transform", "KHR_mesh_quantization", "KHR_materials_",
    "KHR_technique_webgl",   "KHR_techniques_webgl",  "KHR_lights_punctual",
    "KHR_texture_basisu",    "EXT_texture_webp",      "MSFT_texture_dds"};

namespace {

// The elements of an array at the top level of the document.
std::vector<uint32_t> ElementsOf(const JsonTape& json, std::string_view key) {
    std::vector<uint32_t> elements;
    const uint32_t array = MemberOf(json, 0, key);
    if (array != 0 && KindOf(json, array) == JsonKind::Array) {
        for (uint32_t i = array + 1; i < json.Values[array].Next; i = json.Values[i].Next) {
            elements.push_back(i);
        }
    }
    return elements;
}

bool IsKnownExtension(std::string_view name) {
    return std::ranges::any_of(KnownExtensions, [&](std::string_view known) {
        return name == known || (known.ends_with('_') && name.starts_with(known));
    });
}

bool CheckExtensions(const JsonTape& json, std::string& error) {
    for (const uint32_t element : ElementsOf(json, "extensionsRequired")) {
        const std::string_view name =
            KindOf(json, element) == JsonKind::Text ? TextOf(json, element) : "";
        if (!IsKnownExtension(name)) {
            error = "the file requires the glTF extension \"" + std::string(name) +
                    "\", which is not supported";
            return false;
        }
    }
    return true;
}

bool ReadBuffers(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                 GltfDocument& document, std::string& error) {
    for (const uint32_t element : ElementsOf(json, "buffers")) {
        const std::string_view uri = TextMember(json, element, "uri");
        document.OwnBytes.emplace_back();
        std::vector<uint8_t>& own = document.OwnBytes.back();
        if (uri.empty()) {
            document.Buffers.push_back(document.Buffers.empty() ? parts.Binary
                                                                : std::span<const uint8_t>());
            continue;
        }
        if (IsDataUri(uri)) {
            if (!DecodeDataUri(uri, own)) {
                error = PlaceOf(json, element) + ": the data URI is broken";
                return false;
            }
        } else {
            const std::u16string file = Utf16FromUtf8(DecodePercent(uri));
            if (!ReadWholeFile(PathIn(directory, file), own)) {
                error = PlaceOf(json, element) + ": the file \"" + Utf8FromUtf16(file) +
                        "\" can't be found or read";
                return false;
            }
        }
        document.Buffers.emplace_back(own);
    }
    return true;
}

void ReadImages(const JsonTape& json, GltfDocument& document) {
    for (const uint32_t element : ElementsOf(json, "images")) {
        GltfImage image;
        image.Name = TextMember(json, element, "name");
        image.Uri = TextMember(json, element, "uri");
        const uint32_t view = MemberOf(json, element, "bufferView");
        if (view != 0 && KindOf(json, view) == JsonKind::Number) {
            const double number = NumberOf(json, view);
            const bool isIndex = number >= 0.0 && number < UINT32_MAX && number == std::floor(number);
            image.BufferView = isIndex ? static_cast<uint32_t>(number) : UINT32_MAX;
        }
        document.Images.push_back(std::move(image));
    }
}

void AppendNumber(double number, std::string& text) {
    constexpr double largestWhole = 9007199254740992.0; // all whole numbers up to here are doubles
    if (number == std::floor(number) && std::abs(number) < largestWhole) {
        text += std::to_string(static_cast<int64_t>(number)); // an index must not look like a fraction
    } else {
        text += nlohmann::json(number).dump();
    }
}

// Appends a value with its contents as JSON for tinygltf.
void AppendVisible(const JsonTape& json, uint32_t value, std::string& text) {
    const JsonKind kind = KindOf(json, value);
    if (kind == JsonKind::Number) {
        AppendNumber(NumberOf(json, value), text);
    } else if (kind == JsonKind::Text) {
        text += nlohmann::json(TextOf(json, value)).dump();
    } else if (kind == JsonKind::Null) {
        text += "null";
    } else if (kind == JsonKind::Bool) {
        text += json.Values[value].Content != 0 ? "true" : "false";
    } else {
        const bool isArray = kind == JsonKind::Array;
        text += isArray ? '[' : '{';
        bool isFirst = true;
        for (uint32_t i = value + 1; i < json.Values[value].Next; i = json.Values[i].Next) {
            const std::string_view key = KeyOf(json, i);
            if (!isArray && (key == "extras" || (value == 0 && std::ranges::find(HiddenMembers, key) !=
                                                                   HiddenMembers.end()))) {
                continue;
            }
            text += isFirst ? "" : ",";
            text += isArray ? "" : nlohmann::json(key).dump() + ":";
            AppendVisible(json, i, text);
            isFirst = false;
        }
        text += isArray ? ']' : '}';
    }
}

} // namespace

bool SplitGlb(std::span<const uint8_t> bytes, GltfParts& parts, std::string& error) {
    if (bytes.size() < GlbHeaderSize + ChunkHeaderSize) {
        error = "the binary glTF file is truncated";
        return false;
    }
    if (LittleEndian(bytes, 4) != GlbVersion) {
        error = "this version of binary glTF is not supported";
        return false;
    }
    size_t at = GlbHeaderSize;
    for (size_t chunk = 0; bytes.size() - at >= ChunkHeaderSize; ++chunk) {
        const uint32_t length = LittleEndian(bytes, at);
        const uint32_t kind = LittleEndian(bytes, at + 4);
        at += ChunkHeaderSize;
        if (length > bytes.size() - at) {
            error = "the binary glTF file is truncated";
            return false;
        }
        const std::span<const uint8_t> content = bytes.subspan(at, length);
        if (chunk == 0 && kind != JsonChunk) {
            break;
        }
        if (chunk == 0) {
            parts.Json = TextOfBytes(content);
        } else if (kind == BinaryChunk && parts.Binary.empty()) {
            parts.Binary = content;
        }
        at += length;
    }
    if (parts.Json.empty()) {
        error = "the binary glTF file does not begin with JSON";
        return false;
    }
    return true;
}

bool ReadGltfDocument(const GltfParts& parts, const JsonTape& json, const std::u16string& directory,
                      GltfDocument& document, std::string& error) {
    if (!CheckExtensions(json, error) || !ReadBuffers(parts, json, directory, document, error)) {
        return false;
    }
    ReadImages(json, document);
    std::string reason;
    std::string ignored;
    bool isRead = false;
    try {
        std::string text;
        AppendVisible(json, 0, text);
        tinygltf::TinyGLTF loader;
        isRead = text.size() <= UINT32_MAX &&
                 loader.LoadASCIIFromString(&document.Records, &reason, &ignored, text.data(),
                                            static_cast<uint32_t>(text.size()), "");
    } catch (const nlohmann::json::exception& exception) {
        reason = exception.what();
    }
    if (!isRead) {
        error = "this is broken glTF: " + reason.substr(0, reason.find('\n'));
        return false;
    }
    return true;
}
