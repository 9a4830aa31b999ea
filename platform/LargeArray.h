// Arrays of plain records that can become large, and their memory.
//
// A page of memory that is touched for the first time costs more than most work on its contents: the
// system clears and maps it. So these arrays never clear elements that are then overwritten, ask for
// large pages, and grow without copying, where the system can do that. Small arrays come from operator
// new like any other memory.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ORVANE_SEES_BOUNDS
#endif
#elif defined(__SANITIZE_ADDRESS__)
#define ORVANE_SEES_BOUNDS
#endif
#ifdef ORVANE_SEES_BOUNDS
#include <sanitizer/asan_interface.h>
#endif

// One block of memory. Its contents are undefined until they are written.
struct LargeMemory {
    std::byte* Bytes = nullptr;
    size_t Room = 0;     // bytes that can be used
    size_t Reserved = 0; // bytes of addresses of a mapping; 0 if the block comes from operator new
};

// Grows a block to at least so many bytes and keeps the first used ones. Throws std::bad_alloc, with the
// block unchanged, if memory runs out.
void GrowMemory(LargeMemory& memory, size_t room, size_t used);

// Returns what is not needed for the first used bytes to the system, as far as whole small pages allow.
void ShrinkMemory(LargeMemory& memory, size_t used);

// Leaves an empty block.
void ReleaseMemory(LargeMemory& memory);

// Tells the address sanitizer which bytes of a block are in use.
inline void MarkUsed([[maybe_unused]] const LargeMemory& memory, [[maybe_unused]] size_t used) {
#ifdef ORVANE_SEES_BOUNDS
    if (memory.Bytes != nullptr) {
        __asan_unpoison_memory_region(memory.Bytes, used);
        __asan_poison_memory_region(memory.Bytes + used, memory.Room - used);
    }
#endif
}

// The same when the end of the used bytes moves. Takes time with the distance, not with the block.
inline void MoveEnd([[maybe_unused]] const LargeMemory& memory, [[maybe_unused]] size_t from,
                    [[maybe_unused]] size_t to) {
#ifdef ORVANE_SEES_BOUNDS
    if (to > from) {
        __asan_unpoison_memory_region(memory.Bytes + from, to - from);
    } else if (to < from) {
        __asan_poison_memory_region(memory.Bytes + to, from - to);
    }
#endif
}

// The most scratch memory of one array that is worth keeping for the next use. [Units: bytes]
constexpr size_t LargestScratch = size_t{1} << 20;

// Unlike std::vector, it leaves new elements undefined and grows without calling constructors.
template <class Element> struct LargeArray {
    static_assert(std::is_trivially_copyable_v<Element>, "elements move as bytes");

    LargeMemory Memory;
    size_t Count = 0;

    LargeArray() = default;
    LargeArray(LargeArray&& other) noexcept
        : Memory(std::exchange(other.Memory, {})), Count(std::exchange(other.Count, 0)) {
    }
    LargeArray& operator=(LargeArray&& other) noexcept {
        std::swap(Memory, other.Memory);
        std::swap(Count, other.Count);
        return *this;
    }
    LargeArray(const LargeArray&) = delete;
    LargeArray& operator=(const LargeArray&) = delete;
    ~LargeArray() {
        ReleaseMemory(Memory);
    }

    Element* begin() {
        return reinterpret_cast<Element*>(Memory.Bytes);
    }
    Element* end() {
        return begin() + Count;
    }
    const Element* begin() const {
        return reinterpret_cast<const Element*>(Memory.Bytes);
    }
    const Element* end() const {
        return begin() + Count;
    }
    Element& operator[](size_t index) {
        return begin()[index];
    }
    const Element& operator[](size_t index) const {
        return begin()[index];
    }

    // Makes room for count elements, and for half as many again as now if that is more.
    void Reserve(size_t count) {
        if (count > Memory.Room / sizeof(Element)) {
            if (count > std::numeric_limits<size_t>::max() / 2 / sizeof(Element)) {
                throw std::bad_alloc();
            }
            const size_t used = Count * sizeof(Element);
            GrowMemory(Memory, std::max(count * sizeof(Element), Memory.Room / 2 * 3), used);
            MarkUsed(Memory, used);
        }
    }
    // New elements are undefined.
    void Resize(size_t count) {
        Reserve(count);
        MoveEnd(Memory, Count * sizeof(Element), count * sizeof(Element));
        Count = count;
    }
    // Adds count undefined elements and returns the first.
    Element* Append(size_t count) {
        const size_t former = Count;
        Resize(former + count);
        return begin() + former;
    }
    void Push(const Element& element) {
        const Element copy = element; // can be in this array
        *Append(1) = copy;
    }
    // Removes the elements and keeps their memory.
    void Clear() {
        Resize(0);
    }
    // Removes the elements and their memory.
    void Release() {
        ReleaseMemory(Memory);
        Count = 0;
    }
    // Removes the elements, and their memory if it is large.
    void ReleaseLarge() {
        if (Memory.Room > LargestScratch) {
            Release();
        } else {
            Clear();
        }
    }
    // Gives back the memory that the present elements do not need.
    void Shrink() {
        ShrinkMemory(Memory, Count * sizeof(Element));
    }
};
