// A layer in front of any library with the 64 operations: passes every call on and injects faults. It
// has the library's file name and loads the library itself.
//
// Environment:
//   ORVANE_FAULT_LIBRARY  path of the library
//   ORVANE_FAULT          "OPERATION CALL only|from KIND [VALUE]": calls of one operation, counted from
//                         1; "new" counts memory requests from SUInitialize on (not with sanitizers).
//                         Or "random SEED RATE": each call with a chance of one in RATE.
//   ORVANE_FAULT_CALLS    output file with a line per operation: name, number of calls, kinds that apply
// Kinds: see KindNames. VALUE is for "count": a number, or +N or -N to add to the true one.
#include "api/SketchUpAPI.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <limits>
#include <new>
#include <span>
#include <sstream>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

namespace {

enum Kind : unsigned { Fail, Scribble, Silent, Lie, Count, Null, Swap, NoKind };

constexpr const char* KindNames[] = {
    "fail",     // a failure, outputs untouched
    "scribble", // a failure, every output overwritten
    "silent",   // success, outputs untouched
    "lie",      // success, every output except handles overwritten
    "count",    // success, wrong count
    "null",     // success, handles are null
    "swap",     // success, handles are earlier ones
};

uint64_t randomState = 0;

// Steele, Lea and Flood: Fast splittable pseudorandom number generators.
uint64_t Random(uint64_t below) {
    randomState += 0x9E3779B97F4A7C15;
    uint64_t bits = randomState;
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EB;
    return (bits ^ (bits >> 31)) % below;
}

struct FaultPlan {
    std::string Operation; // "random" for any
    uint64_t Call = 0;     // the seed, if random
    std::string Span;      // the rate, if random
    Kind What = NoKind;
    std::string Value = "0";
    uint64_t Rate = 0;
};

const FaultPlan& Plan() {
    static const FaultPlan ThePlan = [] {
        FaultPlan read;
        const char* text = std::getenv("ORVANE_FAULT");
        std::istringstream words(text != nullptr ? text : "");
        std::string kind;
        words >> read.Operation >> read.Call >> read.Span >> kind >> read.Value;
        for (unsigned i = 0; i < NoKind; ++i) {
            read.What = kind == KindNames[i] ? Kind(i) : read.What;
        }
        if (read.Operation == "random") {
            randomState = read.Call;
            read.Rate = std::stoull(read.Span);
        }
        return read;
    }();
    return ThePlan;
}

bool IsMeant(uint64_t call) {
    const FaultPlan& plan = Plan();
    return call == plan.Call || (call > plan.Call && plan.Span == "from");
}

template <class Type> constexpr bool IsHandle = requires(Type value) {
    value.Value;
};

template <class Type> constexpr bool IsOutput =
    std::is_pointer_v<Type> && !std::is_const_v<std::remove_pointer_t<Type>>;

template <class Type> constexpr bool GivesHandle =
    IsOutput<Type>&& IsHandle<std::remove_pointer_t<Type>>;

template <class Function> struct Signature;
template <class R, class... P> struct Signature<R(P...)> {
    using Result = R;
    template <size_t I> using Parameter = std::tuple_element_t<I, std::tuple<P...>>;
    static constexpr bool HasResult = std::is_same_v<R, int32_t>;
    static constexpr bool HasHandle = IsHandle<R> || (GivesHandle<P> || ...);
    static constexpr bool HasCount = (std::is_same_v<P, uint64_t*> || ...);
    static constexpr bool HasNumber = ((IsOutput<P> && !GivesHandle<P>) || ...);
};

template <class Function> bool Applies(Kind kind) {
    using S = Signature<Function>;
    switch (kind) {
    case Fail:
    case Silent:
        return S::HasResult;
    case Scribble:
        return S::HasResult && (S::HasHandle || S::HasNumber);
    case Lie:
        return S::HasNumber;
    case Count:
        return S::HasCount;
    default:
        return S::HasHandle;
    }
}

// One operation: its number of calls, and the library's function.
struct Operation {
    const char* Name;
    void* Behind;
    bool (*AppliesTo)(Kind);
    uint64_t Calls = 0;

    Operation(const char* name, bool (*applies)(Kind));
    // Counts a call and returns its fault.
    Kind NextCall();
};

// Not a vector: its memory requests would be counted.
std::array<Operation*, 64> operations = {};
size_t operationCount = 0;
bool running = false;
uint64_t requests = 0; // for memory, while running

void* Library() {
    static void* const TheLibrary = [] {
        const char* path = std::getenv("ORVANE_FAULT_LIBRARY");
        void* opened = path != nullptr ? dlopen(path, RTLD_NOW | RTLD_LOCAL) : nullptr;
        if (opened == nullptr) {
            std::fprintf(stderr, "fault layer: no library: %s\n", dlerror());
            std::abort();
        }
        return opened;
    }();
    return TheLibrary;
}

Operation::Operation(const char* name, bool (*applies)(Kind))
    : Name(name), Behind(dlsym(Library(), name)), AppliesTo(applies) {
    operations[operationCount++] = this;
}

Kind Operation::NextCall() {
    ++Calls;
    const FaultPlan& plan = Plan();
    if (plan.Rate != 0) {
        const auto kind = static_cast<Kind>(Random(NoKind));
        return Random(plan.Rate) == 0 && AppliesTo(kind) ? kind : NoKind;
    }
    return plan.Operation == Name && IsMeant(Calls) ? plan.What : NoKind;
}

// The number of elements of an output: the preceding argument, or a constant of the operation.
uint64_t SizeOfOutput(const char* name, uint64_t told) {
    const std::string_view text = name;
    return told != 0                     ? told
           : text.ends_with("Plane")     ? PlaneValues
           : text.ends_with("Transform") ? TransformValues
           : text.ends_with("Color")     ? 4
                                         : 1;
}

template <class Type> void Spoil(Type& output) {
    constexpr double numbers[] = {std::numeric_limits<double>::quiet_NaN(),
                                  HUGE_VAL,
                                  -HUGE_VAL,
                                  1e300,
                                  -3.5e38,
                                  1e-320,
                                  0.0,
                                  -1.0};
    if constexpr (std::is_array_v<Type>) {
        for (auto& element : output) {
            Spoil(element);
        }
    } else if constexpr (std::is_same_v<Type, double>) {
        output = numbers[Random(std::size(numbers))];
    } else {
        std::memset(&output, 0xA5, sizeof output);
    }
}

uint64_t OtherCount(uint64_t count) {
    constexpr uint64_t hostile[] = {0,          1,    2, 1000, 1u << 31, 1ull << 32, (1ull << 32) + 1,
                                    1ull << 63, ~0ull};
    if (Plan().Rate != 0) {
        return Random(2) == 0 ? count + 1 - 2 * Random(2) : hostile[Random(std::size(hostile))];
    }
    const std::string& value = Plan().Value;
    const uint64_t number = std::stoull(value);
    return value[0] == '+' || value[0] == '-' ? count + number : number;
}

// Stores the handle and returns a random stored one of its type.
template <class Handle> Handle Earlier(Handle handle) {
    static std::vector<Handle> earlier;
    earlier.push_back(handle);
    return earlier[Random(earlier.size())];
}

// Changes one output after, or instead of, the true call.
template <class Type> void SpoilOutput(const char* name, Kind kind, uint64_t told, Type output) {
    if constexpr (IsOutput<Type>) {
        if (output == nullptr) {
            return;
        }
        if (kind == Scribble || (kind == Lie && !GivesHandle<Type>)) {
            for (uint64_t i = 0; i < SizeOfOutput(name, told); ++i) {
                Spoil(output[i]);
            }
        }
        if constexpr (std::is_same_v<Type, uint64_t*>) {
            if (kind == Count && told == 0) {
                *output = OtherCount(*output);
            }
        }
        if constexpr (GivesHandle<Type>) {
            if (kind == Null) {
                *output = {};
            } else if (kind == Swap) {
                *output = Earlier(*output);
            }
        }
    }
}

template <class Function, class... Arguments> auto Answer(Operation& operation, Arguments... arguments)
    -> typename Signature<Function>::Result {
    using Result = typename Signature<Function>::Result;
    const auto behind = reinterpret_cast<Function*>(operation.Behind);
    const Kind kind = operation.NextCall();
    if constexpr (std::is_same_v<Result, int32_t>) {
        const bool calls = kind != Fail && kind != Scribble && kind != Silent;
        const int32_t result = calls ? behind(arguments...) : kind == Silent ? 0 : 1;
        if (kind != NoKind) {
            uint64_t told = 0;
            const auto each = [&](auto argument) {
                SpoilOutput(operation.Name, kind, told, argument);
                if constexpr (std::is_same_v<decltype(argument), uint64_t>) {
                    told = argument;
                } else {
                    told = 0;
                }
            };
            (each(arguments), ...);
        }
        return kind == NoKind || !calls ? result : 0;
    } else if constexpr (IsHandle<Result>) {
        const Result handle = behind(arguments...);
        return kind == Null ? Result() : kind == Swap ? Earlier(handle) : handle;
    } else {
        behind(arguments...);
    }
}

void WriteCalls() {
    const char* path = std::getenv("ORVANE_FAULT_CALLS");
    std::FILE* file = path != nullptr ? std::fopen(path, "w") : nullptr;
    if (file == nullptr) {
        return;
    }
    for (const Operation* operation : std::span(operations).first(operationCount)) {
        std::fprintf(file, "%s %llu", operation->Name,
                     static_cast<unsigned long long>(operation->Calls));
        for (unsigned kind = 0; kind < Swap; ++kind) {
            std::fputs(operation->AppliesTo(Kind(kind)) ? (std::string(" ") + KindNames[kind]).c_str()
                                                        : "",
                       file);
        }
        std::fputs("\n", file);
    }
    std::fprintf(file, "new %llu fail\n", static_cast<unsigned long long>(requests));
    std::fclose(file);
}

} // namespace

#define PARAMETER(name, i) Signature<decltype(name)>::Parameter<i>
#define ANSWER(name, ...)                                                                               \
    static Operation operation(#name, Applies<decltype(name)>);                                         \
    return Answer<decltype(name)>(operation, __VA_ARGS__);
#define OPERATION1(name)                                                                                \
    Signature<decltype(name)>::Result name(PARAMETER(name, 0) a) {                                      \
        ANSWER(name, a)                                                                                 \
    }
#define OPERATION2(name)                                                                                \
    Signature<decltype(name)>::Result name(PARAMETER(name, 0) a, PARAMETER(name, 1) b) {                \
        ANSWER(name, a, b)                                                                              \
    }
#define OPERATION3(name)                                                                                \
    Signature<decltype(name)>::Result name(PARAMETER(name, 0) a, PARAMETER(name, 1) b,                  \
                                           PARAMETER(name, 2) c) {                                      \
        ANSWER(name, a, b, c)                                                                           \
    }
#define OPERATION4(name)                                                                                \
    Signature<decltype(name)>::Result name(PARAMETER(name, 0) a, PARAMETER(name, 1) b,                  \
                                           PARAMETER(name, 2) c, PARAMETER(name, 3) d) {                \
        ANSWER(name, a, b, c, d)                                                                        \
    }
#define OPERATION5(name)                                                                                \
    Signature<decltype(name)>::Result name(PARAMETER(name, 0) a, PARAMETER(name, 1) b,                  \
                                           PARAMETER(name, 2) c, PARAMETER(name, 3) d,                  \
                                           PARAMETER(name, 4) e) {                                      \
        ANSWER(name, a, b, c, d, e)                                                                     \
    }

extern "C" {
OPERATION1(SUModelRelease)
OPERATION1(SUFaceToDrawingElement)
OPERATION1(SUUVHelperRelease)
OPERATION1(SUImageToDrawingElement)
OPERATION1(SUImageToEntity)
OPERATION1(SUImageRepCreate)
OPERATION1(SUImageRepRelease)
OPERATION1(SUGroupToDrawingElement)
OPERATION1(SUComponentInstanceToDrawingElement)
OPERATION1(SUStringCreate)
OPERATION1(SUStringRelease)
OPERATION1(SUTextureWriterCreate)
OPERATION2(SUModelCreateFromFile)
OPERATION2(SUModelGetEntities)
OPERATION2(SUModelGetNumAllMaterials)
OPERATION2(SUEntitiesGetNumFaces)
OPERATION2(SUEntitiesGetNumGroups)
OPERATION2(SUEntitiesGetNumInstances)
OPERATION2(SUEntitiesGetNumImages)
OPERATION2(SUFaceGetFrontMaterial)
OPERATION2(SUFaceGetBackMaterial)
OPERATION2(SUFaceGetPlane)
OPERATION2(SUMeshHelperGetNumTriangles)
OPERATION2(SUMeshHelperGetNumVertices)
OPERATION2(SUMaterialGetName)
OPERATION2(SUMaterialGetColor)
OPERATION2(SUMaterialGetUseOpacity)
OPERATION2(SUMaterialGetOpacity)
OPERATION2(SUMaterialGetType)
OPERATION2(SUMaterialGetTexture)
OPERATION2(SUTextureGetFileName)
OPERATION2(SUTextureWriteToFile)
OPERATION2(SUImageGetFileName)
OPERATION2(SUImageGetTransform)
OPERATION2(SUImageGetImageRep)
OPERATION2(SUGroupGetName)
OPERATION2(SUGroupGetTransform)
OPERATION2(SUGroupGetEntities)
OPERATION2(SUComponentInstanceGetDefinition)
OPERATION2(SUComponentInstanceGetTransform)
OPERATION2(SUComponentDefinitionGetEntities)
OPERATION2(SUDrawingElementGetHidden)
OPERATION2(SUDrawingElementGetLayer)
OPERATION2(SUDrawingElementGetMaterial)
OPERATION2(SULayerGetVisibility)
OPERATION3(SUMeshHelperCreateWithUVHelper)
OPERATION3(SUImageRepGetPixelDimensions)
OPERATION3(SUTextureWriterLoadEntity)
OPERATION4(SUModelGetAllMaterials)
OPERATION4(SUEntitiesGetFaces)
OPERATION4(SUEntitiesGetGroups)
OPERATION4(SUEntitiesGetInstances)
OPERATION4(SUEntitiesGetImages)
OPERATION4(SUMeshHelperGetVertices)
OPERATION4(SUMeshHelperGetNormals)
OPERATION4(SUMeshHelperGetFrontSTQCoords)
OPERATION4(SUMeshHelperGetBackSTQCoords)
OPERATION4(SUMeshHelperGetVertexIndices)
OPERATION4(SUStringGetUTF16)
OPERATION4(SUTextureWriterWriteTexture)
OPERATION5(SUFaceGetUVHelper)
OPERATION5(SUTextureGetDimensions)

void SUInitialize(void) {
    reinterpret_cast<void (*)()>(dlsym(Library(), "SUInitialize"))();
    Plan();
    running = true;
}

void SUTerminate(void) {
    running = false;
    reinterpret_cast<void (*)()>(dlsym(Library(), "SUTerminate"))();
    WriteCalls();
}
}

#ifndef __SANITIZE_ADDRESS__
// Replaces the standard operators in the whole process.
void* operator new(size_t size) {
    if (running) {
        ++requests;
        if (Plan().Operation == "new" && IsMeant(requests)) {
            throw std::bad_alloc();
        }
    }
    void* memory = std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
    std::free(memory);
}
#endif
