// The stages of a conversion: welding compared with meshoptimizer's exact remap, splitting, and writing
// compared with plain calls of write.
//
// A benchmark with a peer alternates both, so that disturbances affect both. Its time is ours; the
// counters give nanoseconds per vertex or byte of both, and "ratio" is ours divided by the peer's.
#include "City.h"
#include "mesh/AddMeshes.h"
#include "mesh/AddPolygons.h"
#include "mesh/WeldVertices.h"
#include "output/SceneFile.h"

#include <benchmark/benchmark.h>
#include <chrono>
#include <cmath>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <meshoptimizer.h>
#include <numeric>
#include <unistd.h>

namespace {

enum Shape { Building, Terrain, LongThin, StrayTriangle };

Vertex CityVertex(uint64_t number) {
    constexpr size_t corners[6] = {0, 1, 2, 0, 2, 3};
    const Quad quad = CityQuad(number / 6);
    const size_t corner = corners[number % 6];
    const auto vector = [](const Point& p) {
        return Vec3{static_cast<float>(p[0]), static_cast<float>(p[2]), static_cast<float>(p[1])};
    };
    return {.Position = vector(quad.Corners[corner]),
            .Normal = vector(quad.Normal),
            .U = static_cast<float>(quad.Coordinates[corner][0]),
            .V = 1.0f - static_cast<float>(quad.Coordinates[corner][1])};
}

// A vertex of a surface with this many columns: hilly ground, or a pipe.
Vertex SurfaceVertex(uint64_t number, uint64_t columns, bool pipe) {
    constexpr uint64_t steps[6][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 0}, {1, 1}, {0, 1}};
    const uint64_t cell = number / 6;
    const uint64_t row = cell / columns + steps[number % 6][1];
    const auto x = static_cast<float>(cell % columns + steps[number % 6][0]);
    const auto z = static_cast<float>(row);
    if (pipe) {
        const float angle = x * (6.2831853f / static_cast<float>(columns));
        const Vec3 normal = {std::cos(angle), std::sin(angle), 0};
        return {.Position = {0.1f * normal.X, 0.1f * normal.Y, 0.05f * z},
                .Normal = normal,
                .U = x / static_cast<float>(columns),
                .V = z};
    }
    Vec3 normal = {-0.3f * std::cos(0.3f * x), 1, -0.2f * std::cos(0.2f * z)};
    Normalize(normal);
    return {.Position = {x, std::sin(0.3f * x) + std::sin(0.2f * z), z},
            .Normal = normal,
            .U = 0.25f * x,
            .V = 0.25f * z};
}

std::vector<Vertex> MakePool(Shape shape, size_t count) {
    const auto columns = static_cast<uint64_t>(std::sqrt(static_cast<double>(count) / 6.0)) + 1;
    std::vector<Vertex> vertices(count);
    for (size_t i = 0; i < count; ++i) {
        vertices[i] = shape == Terrain    ? SurfaceVertex(i, columns, false)
                      : shape == LongThin ? SurfaceVertex(i, 16, true)
                                          : CityVertex(i);
    }
    if (shape == StrayTriangle) {
        for (size_t i = count - 3; i < count; ++i) {
            vertices[i].Position.X += 1e6f;
        }
    }
    return vertices;
}

// A pool in which each corner has a vertex of its own.
VertexPool PoolOf(const std::vector<Vertex>& vertices) {
    VertexPool pool;
    std::ranges::copy(vertices, pool.Vertices.Append(vertices.size()));
    pool.Corners.Resize(vertices.size());
    std::iota(pool.Corners.begin(), pool.Corners.end(), 0u);
    return pool;
}

template <class Work> double SecondsOf(Work work) {
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

void ReportPair(benchmark::State& state, double ours, double peers, double unitsPerIteration) {
    const double units = unitsPerIteration * static_cast<double>(state.iterations());
    state.counters["ours_ns"] = ours / units * 1e9;
    state.counters["peer_ns"] = peers / units * 1e9;
    state.counters["ratio"] = ours / peers;
}

// The peer's buffers are allocated and touched before; memory that either side allocates itself counts
// in its time. Small pools run many at a time, because of the clock's resolution.
void Weld(benchmark::State& state, Shape shape) {
    const auto count = static_cast<size_t>(state.range(0));
    const std::vector<Vertex> pool = MakePool(shape, count);
    const size_t copies = std::max<size_t>(1, 30'000 / count);
    double ours = 0;
    double peers = 0;
    size_t oursKept = 0;
    size_t peersKept = 0;
    std::vector<VertexPool> pools(copies);
    WeldScratch scratch;
    std::vector<uint32_t> remap(count);
    std::vector<uint32_t> remappedIndices(count);
    std::vector<Vertex> remapped(count);
    while (state.KeepRunning()) {
        for (size_t i = 0; i < copies; ++i) {
            pools[i] = PoolOf(pool);
        }
        const double seconds = SecondsOf([&] {
            for (size_t i = 0; i < copies; ++i) {
                WeldVertices(pools[i], scratch, WeldTolerance);
            }
        });
        oursKept = pools[0].Vertices.Count;
        peers += SecondsOf([&] {
            for (size_t i = 0; i < copies; ++i) {
                peersKept = meshopt_generateVertexRemap(remap.data(), nullptr, count, pool.data(), count,
                                                        sizeof(Vertex));
                meshopt_remapVertexBuffer(remapped.data(), pool.data(), count, sizeof(Vertex),
                                          remap.data());
                meshopt_remapIndexBuffer(remappedIndices.data(), static_cast<uint32_t*>(nullptr), count,
                                         remap.data());
            }
        });
        ours += seconds;
        state.SetIterationTime(seconds);
    }
    ReportPair(state, ours, peers, static_cast<double>(copies * count));
    state.counters["kept"] = static_cast<double>(oursKept);
    state.counters["peer_kept"] = static_cast<double>(peersKept);
}

void Split(benchmark::State& state) {
    const auto count = static_cast<size_t>(state.range(0));
    const std::vector<Vertex> vertices = MakePool(Building, count);
    double seconds = 0;
    while (state.KeepRunning()) {
        VertexPool pool = PoolOf(vertices);
        WeldScratch scratch;
        WeldVertices(pool, scratch, WeldTolerance);
        SceneNode node(u"");
        MeshMemory memory;
        const double time = SecondsOf([&] { AddMeshes(node, pool, DefaultMaterialIndex, memory); });
        seconds += time;
        state.SetIterationTime(time);
    }
    state.counters["ours_ns"] =
        seconds / static_cast<double>(count) / static_cast<double>(state.iterations()) * 1e9;
}

void WriteAll(const std::filesystem::path& path, const std::string& bytes) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    for (size_t written = 0; written < bytes.size();) {
        const ssize_t count = write(file, bytes.data() + written, bytes.size() - written);
        if (count <= 0) {
            std::abort();
        }
        written += static_cast<size_t>(count);
    }
    close(file);
}

void Write(benchmark::State& state) {
    const auto vertexCount = static_cast<size_t>(state.range(0));
    SceneNode root(u"");
    VertexPool pool = PoolOf(MakePool(Building, vertexCount));
    WeldScratch scratch;
    MeshMemory memory;
    WeldVertices(pool, scratch, WeldTolerance);
    AddMeshes(root, pool, DefaultMaterialIndex, memory);
    MaterialTable materials;
    materials.Rows.resize(1);
    const std::filesystem::path folder = std::filesystem::temp_directory_path();
    const std::filesystem::path scene = folder / ("orvane-bench-" + std::to_string(getpid()));
    const std::filesystem::path plain = scene.string() + "-plain";
    const auto writeScene = [&] {
        OutputFile file;
        file.Open(scene.u16string());
        ProgressLine progress;
        if (!WriteScene(file, root, materials, progress)) {
            std::abort();
        }
    };
    writeScene();
    std::string bytes(std::filesystem::file_size(scene), '\0');
    std::ifstream(scene, std::ios::binary)
        .read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    double ours = 0;
    double peers = 0;
    while (state.KeepRunning()) {
        std::filesystem::remove(scene);
        std::filesystem::remove(plain);
        const double seconds = SecondsOf(writeScene);
        peers += SecondsOf([&] { WriteAll(plain, bytes); });
        ours += seconds;
        state.SetIterationTime(seconds);
    }
    std::filesystem::remove(scene);
    std::filesystem::remove(plain);
    ReportPair(state, ours, peers, static_cast<double>(bytes.size()));
}

void UsePoolSizes(benchmark::internal::Benchmark* weld) {
    weld->UseManualTime();
    for (const int count : {81, 300, 3'000, 30'000, 300'000, 3'000'000, 12'000'000}) {
        weld->Arg(count);
    }
}

} // namespace

BENCHMARK_CAPTURE(Weld, building, Building)->Apply(UsePoolSizes);
BENCHMARK_CAPTURE(Weld, terrain, Terrain)->Apply(UsePoolSizes);
BENCHMARK_CAPTURE(Weld, long_thin, LongThin)->Apply(UsePoolSizes);
BENCHMARK_CAPTURE(Weld, stray, StrayTriangle)->Apply(UsePoolSizes);
BENCHMARK(Split)->UseManualTime()->Arg(3'000'000)->Arg(12'000'000);
BENCHMARK(Write)->UseManualTime()->Arg(3'000'000);
BENCHMARK_MAIN();
