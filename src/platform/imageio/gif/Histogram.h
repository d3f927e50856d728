// Histogram: counts the colours of a picture. It starts with exact colours and halves its resolution whenever
// there are too many, so that it is exact for drawings and small for photographs.
#pragma once

#include "platform/imageio/gif/CoveredPicture.h"

#include <array>
#include <span>
#include <vector>

namespace kestrine::gif {

class Histogram {
public:
    /// The pixels in one cell of the colour cube. In an exact histogram a cell is a single colour.
    struct Entry {
        std::uint32_t cell;
        std::uint32_t pixels;
        std::array<std::uint64_t, 3> sums; ///< of red, green and blue over the pixels

        Color mean() const;
    };

    Histogram();

    void add(Color color) {
        if (cellOf(color) != entries_[latest_].cell)
            latest_ = indexOf(color);
        Entry& entry = entries_[latest_];
        ++entry.pixels;
        entry.sums[0] += color.red;
        entry.sums[1] += color.green;
        entry.sums[2] += color.blue;
    }

    /// The entries in the order of first appearance.
    std::span<const Entry> entries() const { return std::span(entries_).subspan(1); }

    /// The index in entries() of a colour that was added.
    std::size_t positionOf(Color color) const { return slots_[slotOf(cellOf(color))] - std::size_t{1}; }

    /// Whether every entry has a single colour.
    bool isExact() const { return shift_ == 0; }

private:
    std::uint32_t cellOf(Color color) const {
        return std::uint32_t{color.red} >> shift_ << 16 | std::uint32_t{color.green} >> shift_ << 8
               | std::uint32_t{color.blue} >> shift_;
    }
    std::size_t slotOf(std::uint32_t cell) const;
    std::size_t indexOf(Color color);
    void coarsen();
    void join(const Entry& entry);

    std::vector<Entry> entries_;       ///< the first one belongs to no cell
    std::vector<std::uint16_t> slots_; ///< a hash table of indices into entries_; 0 is a free slot
    std::size_t latest_ = 0;           ///< the entry that the last pixel went to
    unsigned shift_ = 0;               ///< a cell is 2^shift_ levels wide
};

} // namespace kestrine::gif
