// Random scripts in the format of tests/scripted/Script.h.
#include "RandomScript.h"

#include <nlohmann/json.hpp>
#include <random>

using Json = nlohmann::json;

namespace {

constexpr size_t Materials = 4;
constexpr size_t Layers = 3;
// Few, so that definitions that all contain each other stay small.
constexpr size_t Definitions = 4;
constexpr unsigned DeepestGroup = 3;

using Engine = std::mt19937_64;

// The standard distributions differ between systems.
uint64_t Below(Engine& engine, uint64_t end) {
    return engine() % end;
}

bool OneIn(Engine& engine, uint64_t count) {
    return Below(engine, count) == 0;
}

Json HostileNumber(Engine& engine) {
    const Json numbers[] = {"nan", "inf",  1e300, -1e300, 3.5e38,
                            -3e38, 1e-320, -0.0,  1e-6,   4294967296.5};
    return numbers[Below(engine, std::size(numbers))];
}

Json Number(Engine& engine) {
    return OneIn(engine, 12) ? HostileNumber(engine) : Json(double(Below(engine, 41)) / 4 - 5);
}

Json Numbers(Engine& engine, size_t count) {
    Json numbers = Json::array();
    for (size_t i = 0; i < count; ++i) {
        numbers.push_back(Number(engine));
    }
    return numbers;
}

Json Triples(Engine& engine, size_t count) {
    Json triples = Json::array();
    for (size_t i = 0; i < count; ++i) {
        triples.push_back(Numbers(engine, 3));
    }
    return triples;
}

Json Text(Engine& engine) {
    const std::string texts[] = {"",
                                 "a",
                                 "%s%d%n",
                                 "brick.jpg",
                                 "BRICK.JPG",
                                 "C:\\x\\a.png",
                                 "a/b\\c",
                                 "ü日😀",
                                 std::string(259, 'n'),
                                 std::string(5000, 'l'),
                                 "two\nlines"};
    return texts[Below(engine, std::size(texts))];
}

// An index into a list of this size, or null.
Json Index(Engine& engine, size_t size) {
    return OneIn(engine, 3) ? Json() : Json(Below(engine, size));
}

void AddElement(Engine& engine, Json& element) {
    element["hidden"] = Below(engine, 3);
    element["layer"] = Index(engine, Layers);
    if (OneIn(engine, 2)) {
        element["material"] = Index(engine, Materials);
    }
    if (OneIn(engine, 3)) {
        element["transform"] = Numbers(engine, 16);
    }
}

Json Face(Engine& engine) {
    const size_t vertices = Below(engine, 9);
    const size_t indices = 3 * Below(engine, 8) + (OneIn(engine, 9) ? 1 : 0);
    Json face = {{"front", Index(engine, Materials)},
                 {"back", Index(engine, Materials)},
                 {"vertices", Triples(engine, vertices)},
                 {"indices", Json::array()}};
    for (size_t i = 0; i < indices; ++i) {
        const uint64_t wild[] = {vertices, ~uint64_t(0), uint64_t(1) << 31, uint64_t(1) << 32};
        face["indices"].push_back(OneIn(engine, 60) ? wild[Below(engine, std::size(wild))]
                                                    : Below(engine, vertices + (vertices == 0)));
    }
    for (const char* name : {"normals", "frontStq", "backStq"}) {
        if (OneIn(engine, 2)) {
            face[name] = Triples(engine, OneIn(engine, 9) ? Below(engine, 9) : vertices);
        }
    }
    if (OneIn(engine, 2)) {
        face["plane"] = Numbers(engine, 4);
    }
    AddElement(engine, face);
    return face;
}

Json Image(Engine& engine) {
    const uint64_t sizes[] = {0, 1, 640, uint64_t(1) << 32, ~uint64_t(0)};
    Json image = {{"file", Text(engine)},
                  {"width", sizes[Below(engine, std::size(sizes))]},
                  {"height", sizes[Below(engine, std::size(sizes))]}};
    AddElement(engine, image);
    return image;
}

Json Entities(Engine& engine, unsigned depth);

Json Group(Engine& engine, unsigned depth) {
    Json group = {{"name", Text(engine)}, {"entities", Entities(engine, depth)}};
    AddElement(engine, group);
    return group;
}

Json Instance(Engine& engine) {
    Json instance = {{"definition", Index(engine, Definitions)}};
    AddElement(engine, instance);
    return instance;
}

template <class Make> Json List(Engine& engine, size_t most, Make make) {
    Json list = Json::array();
    for (size_t count = Below(engine, most + 1); list.size() < count;) {
        list.push_back(OneIn(engine, 10) ? Json() : make());
    }
    return list;
}

Json Entities(Engine& engine, unsigned depth) {
    Json entities = {{"faces", List(engine, 4, [&] { return Face(engine); })},
                     {"images", List(engine, 2, [&] { return Image(engine); })},
                     {"instances", List(engine, 2, [&] { return Instance(engine); })}};
    if (depth < DeepestGroup) {
        entities["groups"] = List(engine, 2, [&] { return Group(engine, depth + 1); });
    }
    return entities;
}

Json Material(Engine& engine) {
    Json material = {{"name", Text(engine)},
                     {"color", {Below(engine, 256), Below(engine, 256), Below(engine, 256), 255}},
                     {"useOpacity", Below(engine, 3)},
                     {"opacity", Number(engine)}};
    if (OneIn(engine, 2)) {
        material["type"] = static_cast<int32_t>(Below(engine, 5)) - 1;
    }
    if (OneIn(engine, 2)) {
        material["texture"] = {
            {"file", Text(engine)}, {"sScale", Number(engine)}, {"tScale", Number(engine)}};
    }
    return material;
}

} // namespace

std::string RandomScript(uint64_t seed) {
    Engine engine(seed);
    Json script;
    for (size_t i = 0; i < Materials; ++i) {
        script["materials"].push_back(Material(engine));
    }
    for (size_t i = 0; i < Layers; ++i) {
        script["layers"].push_back({{"visible", Below(engine, 3)}});
    }
    for (size_t i = 0; i < Definitions; ++i) {
        script["definitions"].push_back(Entities(engine, 1));
    }
    script["materialList"] = List(engine, 6, [&] { return Index(engine, Materials); });
    script["entities"] = Entities(engine, 0);
    constexpr uint64_t rates[] = {3, 20, 100, 1000000};
    script["random"] = {{"seed", seed}, {"rate", rates[Below(engine, std::size(rates))]}};
    return script.dump();
}
