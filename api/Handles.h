// The opaque handles of the model library, one type per kind so that the compiler distinguishes them.
#pragma once

#include <cstdint>

// A handle has 8 bytes and is passed by value. 0 is the null handle. Handles are only tested for null
// and compared for equality.
// clang-format off
struct ModelHandle               { uint64_t Value; };
struct EntitiesHandle            { uint64_t Value; };
struct FaceHandle                { uint64_t Value; };
struct GroupHandle               { uint64_t Value; };
struct ComponentInstanceHandle   { uint64_t Value; };
struct ComponentDefinitionHandle { uint64_t Value; };
struct ImageHandle               { uint64_t Value; };
struct ImageRepHandle            { uint64_t Value; };
struct EntityHandle              { uint64_t Value; };
struct DrawingElementHandle      { uint64_t Value; };
struct LayerHandle               { uint64_t Value; };
struct MaterialHandle            { uint64_t Value; };
struct TextureHandle             { uint64_t Value; };
struct TextureWriterHandle       { uint64_t Value; };
struct StringHandle              { uint64_t Value; };
struct UVHelperHandle            { uint64_t Value; };
struct MeshHelperHandle          { uint64_t Value; };
// clang-format on

template <class Handle> constexpr bool IsNull(Handle handle) {
    return handle.Value == 0;
}
