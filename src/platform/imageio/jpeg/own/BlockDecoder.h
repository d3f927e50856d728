// Decodes one block from a reservoir: the innermost loop of all. Two things make it fast: most look-ups give
// two symbols, and nothing in it branches but the end of the block.
#pragma once

#include "platform/imageio/jpeg/own/HuffmanTables.h"
#include "platform/imageio/jpeg/own/Reservoir.h"

namespace kestrine::jpeg {

/// Blocks lie in groups side by side, so that a vector holds the same coefficient of all of them: the
/// coefficient at row * 8 + column of the block in lane l is coefficients[row * 8 + column][l]. The place
/// behind the 64 takes what is stored beyond the end of a block.
inline constexpr std::size_t lanesOfGroup = 16;
struct alignas(64) LaneGroup {
    std::int16_t coefficients[64 + 1][lanesOfGroup];
};

/// Where in a group (lane 0) the coefficient stands that the steps along the zigzag have come to. They may
/// lead beyond 63: a look-up starts at 62 at most and ends at 62 + 16 + ACEntry::endOfBlock or 62 +
/// ACEntry::slow at most.
inline constexpr std::array<std::uint16_t, 256> offsetAlongZigzag = [] {
    std::array<std::uint16_t, 256> offsets{};
    for (std::size_t k = 0; k < offsets.size(); ++k)
        offsets[k] = static_cast<std::uint16_t>((k < 64 ? naturalOrder[k] : 64) * lanesOfGroup);
    return offsets;
}();

/// The rare end of a look-up, see settleBlock.
struct SettledBlock {
    Reservoir reservoir;
    int position; ///< along the zigzag; -1 when the block is damaged
    bool goesOn;  ///< whether the block has further symbols
};

/// Sorts out a look-up that led to `position`, which is neither 63 nor that of an end of block (128 + the
/// last position, 0 to 62). Either the entry was slow, or the first symbol was the block's last and the
/// second belongs to the next block, or the symbols overrun the block. At least 56 bits are in the reservoir
/// afterwards.
SettledBlock settleBlock(Reservoir reservoir, const ACTable& table, ACEntry entry, int position,
                         std::int16_t* block);

/// The DC difference behind a code longer than the table's index; none when it is damaged. At least 56 bits
/// are in the reservoir afterwards.
struct SlowDC {
    Reservoir reservoir;
    std::optional<int> difference;
};
SlowDC slowDC(Reservoir reservoir, const DCTable& table);

/// One look-up's symbols: stores them and returns the new position. `stores` says whether coefficients are
/// wanted.
template <bool stores>
[[gnu::always_inline]] inline int takeSymbols(Reservoir& reservoir, ACEntry entry, int position,
                                              std::int16_t* block) {
    const std::uint64_t bits = reservoir.bits << entry.codeLength();
    reservoir.drop(entry.total());
    const int first = position + entry.step1(), second = first + entry.step2();
    if constexpr (stores) {
        // Without a second symbol both go to the same place, so this order matters.
        block[offsetAlongZigzag[static_cast<std::size_t>(second)]] = entry.value2();
        block[offsetAlongZigzag[static_cast<std::size_t>(first)]] =
            static_cast<std::int16_t>(extraValue(bits, entry.extraShift()));
    }
    return second;
}

/// Decodes one block into its lane (`block` is the group's first coefficient, plus the lane), whose AC
/// coefficients are 0 before, and adds the DC difference to `predictor`. Returns the position of the last
/// symbol along the zigzag, or -1 when the stream is damaged.
///
/// How many bits are in the reservoir, and that they suffice. A refill makes it 56. It happens in the shadow
/// of a look-up: the index is taken before it, the symbols after it. DC takes at most 9 + 11 = 20 bits, a
/// look-up of AC at most 11 + 10 = 21.
///   begin of a block    >= 14 >= the DC index of 9   (first block of a segment: filled)
///   refill, DC          >= 36
///   first look-up       >= 36 - 21 = 15 >= the AC index of 11
///   refill, look-up     >= 56 - 21 = 35, then without refill >= 35 - 21 = 14 >= 11, and so on
///   after settleBlock and slowDC  >= 56
template <bool stores>
[[gnu::always_inline]] inline int decodeBlock(Reservoir& reservoir, const DCTable& dcTable,
                                              const ACTable& acTable, std::int16_t* block, int& predictor) {
    const DCEntry dc = dcTable.entries[reservoir.bits >> (64 - DCTable::indexBits)];
    reservoir.refill();
    if (dc.total() != 0) [[likely]] {
        predictor += extraValue(reservoir.bits << dc.codeLength(), dc.extraShift());
        reservoir.drop(dc.total());
    } else {
        const SlowDC slow = slowDC(reservoir, dcTable);
        if (!slow.difference)
            return -1;
        reservoir = slow.reservoir;
        predictor += *slow.difference;
    }
    block[0] = static_cast<std::int16_t>(predictor);

    constexpr int indexShift = 64 - ACTable::indexBits;
    int position = 0;
    for (;;) {
        ACEntry entry;
        do {
            entry = acTable.entries[reservoir.bits >> indexShift];
            position = takeSymbols<stores>(reservoir, entry, position, block);
            if (position >= 63)
                break;
            entry = acTable.entries[reservoir.bits >> indexShift];
            reservoir.refill();
            position = takeSymbols<stores>(reservoir, entry, position, block);
        } while (position < 63);
        if (position == 63)
            return 63;
        if (position >= ACEntry::endOfBlock && position <= ACEntry::endOfBlock + 62) [[likely]]
            return position - ACEntry::endOfBlock;
        const SettledBlock settled = settleBlock(reservoir, acTable, entry, position, block);
        reservoir = settled.reservoir;
        position = settled.position;
        if (!settled.goesOn)
            return position;
    }
}

} // namespace kestrine::jpeg
