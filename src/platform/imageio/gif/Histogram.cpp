#include "platform/imageio/gif/Histogram.h"

#include <algorithm>

namespace kestrine::gif {

namespace {

/// More cells take time and do not improve the choice of 256 colours.
constexpr std::size_t maximumCells = 4096;
/// Twice as many slots as cells keep the searches short.
constexpr unsigned colorSlotBits = 14;
/// Larger than the number of every cell.
constexpr std::uint32_t noCell = 0xFFFF'FFFF;

std::uint8_t roundedMean(std::uint64_t sum, std::uint32_t pixels) {
    return static_cast<std::uint8_t>((sum + pixels / 2) / pixels);
}

} // namespace

Color Histogram::Entry::mean() const {
    return {roundedMean(sums[0], pixels), roundedMean(sums[1], pixels), roundedMean(sums[2], pixels)};
}

Histogram::Histogram() : entries_{{noCell, 0, {}}}, slots_(std::size_t{1} << colorSlotBits) {}

std::size_t Histogram::indexOf(Color color) {
    std::size_t slot = slotOf(cellOf(color));
    while (slots_[slot] == 0 && entries_.size() > maximumCells) {
        coarsen();
        slot = slotOf(cellOf(color));
    }
    if (slots_[slot] == 0) {
        slots_[slot] = static_cast<std::uint16_t>(entries_.size());
        entries_.push_back({cellOf(color), 0, {}});
    }
    return slots_[slot];
}

/// The slot that holds `cell`, or the free slot for it.
std::size_t Histogram::slotOf(std::uint32_t cell) const {
    // The multiplier, 2^32 divided by the golden ratio, spreads neighbouring cells over the table.
    std::size_t slot = cell * 0x9E37'79B1u >> (32 - colorSlotBits);
    while (slots_[slot] != 0 && entries_[slots_[slot]].cell != cell)
        slot = (slot + 1) % slots_.size();
    return slot;
}

/// Doubles the width of the cells and joins those that become equal.
void Histogram::coarsen() {
    ++shift_;
    latest_ = 0;
    std::ranges::fill(slots_, std::uint16_t{0});
    std::vector<Entry> old{entries_[0]};
    old.swap(entries_);
    for (Entry& entry : std::span(old).subspan(1)) {
        entry.cell = entry.cell >> 1 & 0x7F7F7F;
        join(entry);
    }
}

void Histogram::join(const Entry& entry) {
    std::uint16_t& index = slots_[slotOf(entry.cell)];
    if (index == 0) {
        index = static_cast<std::uint16_t>(entries_.size());
        entries_.push_back(entry);
        return;
    }
    Entry& into = entries_[index];
    into.pixels += entry.pixels;
    for (std::size_t c = 0; c < 3; ++c)
        into.sums[c] += entry.sums[c];
}

} // namespace kestrine::gif
