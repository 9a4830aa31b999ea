// Chooses where the memory of large arrays comes from.
#include "platform/LargeArray.h"

#include "platform/Platform.h"

#include <cstdlib>
#include <cstring>

namespace {

#ifdef ORVANE_SEES_BOUNDS
// The sanitizer sees only the bounds of what its own allocator returns.
constexpr size_t RoomStep = 1;

std::byte* Map(size_t room, size_t& reserved) {
    reserved = room;
    return static_cast<std::byte*>(std::calloc(room, 1));
}

void Unmap(std::byte* bytes, size_t) {
    std::free(bytes);
}

bool Grow(std::byte*& bytes, size_t& reserved, size_t, size_t room, size_t used) {
    std::byte* const target = Map(room, reserved);
    if (target == nullptr) {
        return false;
    }
    std::copy_n(bytes, used, target);
    Unmap(bytes, 0);
    bytes = target;
    return true;
}

void Shrink(std::byte*, size_t&, size_t, size_t) {
}
#else
constexpr size_t RoomStep = size_t{1} << 16; // of mappings smaller than a large page
constexpr auto Map = MapMemory;
constexpr auto Unmap = UnmapMemory;
constexpr auto Grow = GrowMapping;
constexpr auto Shrink = ShrinkMapping;
#endif

// Blocks of this size or more are mappings: a growing array would leave holes in the heap. [Units:
// bytes]
constexpr size_t SmallestMapping = size_t{1} << 17;

// The least that is given back to the system. [Units: bytes]
constexpr size_t SmallPage = 4096;

size_t WholeSteps(size_t size) {
    const size_t step = RoomStep > 1 && size > LargePage ? LargePage : RoomStep;
    return (size + step - 1) / step * step;
}

LargeMemory NewBlock(size_t room) {
    LargeMemory memory = {.Bytes = nullptr, .Room = room, .Reserved = 0};
    if (room < SmallestMapping) {
        memory.Bytes = static_cast<std::byte*>(::operator new(room));
        return memory;
    }
    memory.Room = WholeSteps(room);
    memory.Bytes = Map(memory.Room, memory.Reserved);
    if (memory.Bytes == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

} // namespace

void GrowMemory(LargeMemory& memory, size_t room, size_t used) {
    MarkUsed(memory, memory.Room);
    if (memory.Reserved != 0) {
        const size_t whole = WholeSteps(room);
        if (!Grow(memory.Bytes, memory.Reserved, memory.Room, whole, used)) {
            throw std::bad_alloc();
        }
        memory.Room = whole;
        return;
    }
    const LargeMemory grown = NewBlock(room);
    if (used > 0) {
        std::memcpy(grown.Bytes, memory.Bytes, used);
    }
    ReleaseMemory(memory);
    memory = grown;
}

void ShrinkMemory(LargeMemory& memory, size_t used) {
    const size_t room = (used + SmallPage - 1) / SmallPage * SmallPage;
    if (RoomStep > 1 && memory.Reserved != 0 && room < memory.Room && room > 0) {
        Shrink(memory.Bytes, memory.Reserved, memory.Room, room);
        memory.Room = room;
    }
}

void ReleaseMemory(LargeMemory& memory) {
    if (memory.Reserved != 0) {
        Unmap(memory.Bytes, memory.Reserved);
    } else {
        ::operator delete(memory.Bytes);
    }
    memory = {};
}
