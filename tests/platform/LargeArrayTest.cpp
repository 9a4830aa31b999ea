// Arrays through all kinds of their memory: from the heap, mapped, grown in place or moved, shrunk.
#include "platform/LargeArray.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace {

void Fill(LargeArray<uint32_t>& array, size_t count) {
    while (array.Count < count) {
        array.Push(static_cast<uint32_t>(array.Count));
    }
}

size_t FirstWrong(const LargeArray<uint32_t>& array) {
    size_t i = 0;
    while (i < array.Count && array[i] == i) {
        ++i;
    }
    return i;
}

} // namespace

// Two arrays in turns, so that neither can always grow where it is. 64 MB have several sizes of pages.
TEST(LargeArray, KeepsItsElementsWhileItGrowsAndShrinks) {
    LargeArray<uint32_t> first;
    LargeArray<uint32_t> second;
    for (size_t count = 1; count <= size_t{1} << 24; count *= 4) {
        Fill(first, count);
        Fill(second, count);
    }
    EXPECT_EQ(FirstWrong(first), first.Count);
    EXPECT_EQ(FirstWrong(second), second.Count);
    first.Resize(100'000);
    first.Shrink();
    Fill(first, 3'000'000);
    EXPECT_EQ(FirstWrong(first), 3'000'000U);
    const LargeArray<uint32_t> moved = std::move(first);
    EXPECT_EQ(FirstWrong(moved), 3'000'000U);
}

#ifndef ORVANE_SEES_BOUNDS // the sanitizer ends the program when it refuses a request
TEST(LargeArray, StaysAsItIsWhenMemoryRunsOut) {
    for (const size_t count : {10U, 1'000'000U}) {
        LargeArray<uint32_t> array;
        Fill(array, count);
        EXPECT_THROW(array.Resize(size_t{1} << 45), std::bad_alloc);
        EXPECT_THROW(array.Resize(size_t{1} << 62), std::bad_alloc);
        EXPECT_EQ(array.Count, count);
        EXPECT_EQ(FirstWrong(array), count);
    }
}
#endif
