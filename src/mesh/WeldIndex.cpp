// Creates, grows and fills the index.
#include "mesh/WeldIndex.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace {

constexpr size_t FewestSlots = 256;
constexpr int TagBits = 32;

void MakeSlots(WeldIndex& index, size_t count) {
    index.Slots.Resize(count);
    std::ranges::fill(index.Slots, IndexSlot{});
    index.SlotMask = count - 1;
    index.TagShift = TagBits - std::countr_zero(count);
    index.Used = 0;
}

void FillSlot(WeldIndex& index, size_t at, const IndexSlot& slot) {
    index.Slots[at] = slot;
    ++index.Used;
}

size_t FreeSlot(const WeldIndex& index, uint32_t tag) {
    return VisitCell(index, tag, [](int32_t) { return false; }).Slot;
}

} // namespace

void Clear(WeldIndex& index, float tolerance, size_t slots) {
    assert(tolerance > 0 && tolerance <= LargestWeldTolerance);
    index.Scale = static_cast<double>(1 << ToleranceBits) / static_cast<double>(tolerance);
    MakeSlots(index, std::bit_ceil(std::max(slots, FewestSlots)));
}

void Reserve(WeldIndex& index, size_t count) {
    if ((index.Used + count) * 2 <= index.Slots.Count) {
        return;
    }
    std::swap(index.Slots, index.Former);
    MakeSlots(index, index.Former.Count * 2);
    // Slots are nearly in the order of tags, so both tables are accessed from front to back.
    for (const IndexSlot& slot : index.Former) {
        if (slot.Kept != NoVertex) {
            FillSlot(index, FreeSlot(index, slot.Tag), slot);
        }
    }
    index.Former.ReleaseLarge();
}

void Enter(WeldIndex& index, const VertexPlaces& places, uint32_t wideTag, const CellEnd& wideEnd,
           int32_t kept) {
    // Cells never lose vertices: every later search that reaches a full wide cell also searches the
    // narrow cells.
    if (wideEnd.Count < FullCell) {
        FillSlot(index, wideEnd.Slot, {.Tag = wideTag, .Kept = kept});
    } else {
        const uint32_t tag = CellTag(CellSum(places, NarrowCell));
        FillSlot(index, FreeSlot(index, tag), {.Tag = tag, .Kept = kept});
    }
}
