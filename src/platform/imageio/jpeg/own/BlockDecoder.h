// Decodes one block from a reservoir. This is the innermost loop. It is fast because most look-ups give two
// symbols and because only the end of a block causes a branch.
#pragma once

#include "platform/imageio/jpeg/own/HuffmanTables.h"
#include "platform/imageio/jpeg/own/Reservoir.h"

#include <algorithm>

namespace kestrine::jpeg {

/// Sixteen blocks whose coefficients are interleaved, so that one vector holds the same coefficient of all
/// blocks: coefficients[row * 8 + column][l] belongs to the block in lane l. The place after the 64
/// coefficients receives what is stored past the end of a block.
inline constexpr std::size_t lanesOfGroup = 16;
struct alignas(64) LaneGroup {
    std::int16_t coefficients[64 + 1][lanesOfGroup];
};

/// The offset in a group (lane 0) of each position along the zigzag. Every position is below 256, and those
/// past 63 share the spare place:
///  1. A look-up starts at position 62 or before.
///  2. With two symbols it ends at 62 + 16 + ACEntry::endOfBlock = 206 or before.
///  3. With a slow entry it ends at 62 + ACEntry::slow = 254 or before.
inline constexpr std::array<std::uint16_t, 256> offsetAlongZigzag = [] {
    std::array<std::uint16_t, 256> offsets{};
    for (std::size_t k = 0; k < offsets.size(); ++k)
        offsets[k] = static_cast<std::uint16_t>((k < 64 ? naturalOrder[k] : 64) * lanesOfGroup);
    return offsets;
}();

/// The largest row-major index of the coefficients up to a position along the zigzag, indexed by that
/// position.
inline constexpr std::array<std::uint8_t, 64> placesUpTo = [] {
    std::array<std::uint8_t, 64> places = naturalOrder;
    for (std::size_t k = 1; k < places.size(); ++k)
        places[k] = std::max(places[k], places[k - 1]);
    return places;
}();

/// The result of settleBlock().
struct SettledBlock {
    Reservoir reservoir;
    int position; ///< along the zigzag; -1 when the block is damaged
    bool goesOn;  ///< whether the block has further symbols
};

/// Handles the rare look-ups that led to a `position` other than 63 or an end of block (128 + the last
/// position, 0 to 62). There are three cases: the entry was slow; the first symbol was the block's last one
/// and the second belongs to the next block; the symbols overrun the block. Afterwards the reservoir holds at
/// least 56 bits, unless the block is damaged.
SettledBlock settleBlock(Reservoir reservoir, const ACTable& table, ACEntry entry, int position,
                         std::int16_t* block);

/// The DC difference after a code that is longer than the table's index; none when no code begins like this.
/// Afterwards the reservoir holds at least 56 bits, unless there is no difference.
struct SlowDC {
    Reservoir reservoir;
    std::optional<int> difference;
};
SlowDC slowDC(Reservoir reservoir, const DCTable& table);

/// Takes the symbols of one look-up and returns the new position. Stores the coefficients if `stores`.
template <bool stores>
[[gnu::always_inline]] inline int takeSymbols(Reservoir& reservoir, ACEntry entry, int position,
                                              std::int16_t* block) {
    const std::uint64_t bits = reservoir.bits << entry.codeLength();
    reservoir.drop(entry.total());
    const int first = position + entry.step1(), second = first + entry.step2();
    if constexpr (stores) {
        // Without a second symbol both have the same place, so the first symbol must be stored last.
        block[offsetAlongZigzag[static_cast<std::size_t>(second)]] = entry.value2();
        block[offsetAlongZigzag[static_cast<std::size_t>(first)]] =
            static_cast<std::int16_t>(extraValue(bits, entry.extraShift()));
    }
    return second;
}

/// Takes a DC difference and adds it to `predictor`. Returns false when no code begins like this. The
/// reservoir must hold 9 bits; afterwards it holds at least 36.
[[gnu::always_inline]] inline bool takeDifference(Reservoir& reservoir, const DCTable& table,
                                                  int& predictor) {
    const DCEntry dc = table.entries[reservoir.bits >> (64 - DCTable::indexBits)];
    reservoir.refill();
    if (dc.total() != 0) [[likely]] {
        predictor += extraValue(reservoir.bits << dc.codeLength(), dc.extraShift());
        reservoir.drop(dc.total());
        return true;
    }
    const SlowDC slow = slowDC(reservoir, table);
    if (!slow.difference)
        return false;
    reservoir = slow.reservoir;
    predictor += *slow.difference;
    return true;
}

/// Decodes one block into its lane and adds the DC difference to `predictor`. `block` points to the group's
/// first coefficient plus the lane; the lane's AC coefficients must be 0. Returns the position of the last
/// symbol along the zigzag, or -1 when the stream is damaged.
///
/// The reservoir always holds as many bits as are used. With n for the number of bits that it holds at least:
///  1. A refill makes n = 56. It happens while a table is read: the index is taken before the refill, the
///     symbols after it.
///  2. A DC code with its extra bits takes at most 9 + 11 = 20 bits, an AC look-up at most 11 + 10 = 21.
///  3. At the beginning of a block n = 14, which is enough for the DC index of 9 bits: see 6. For the first
///     block of a segment, start() and passRestart() of EntropyDecoder refill.
///  4. After the refill and the DC symbol n = 56 - 20 = 36, or 56 after slowDC().
///  5. The first AC look-up has n = 36 and leaves n = 36 - 21 = 15, enough for the next index of 11 bits.
///  6. From then on look-ups alternate: one with a refill leaves n = 56 - 21 = 35, the next one without a
///     refill leaves n = 35 - 21 = 14, enough for the next index. The block may end after either.
///  7. settleBlock() leaves n = 56.
template <bool stores>
[[gnu::always_inline]] inline int decodeBlock(Reservoir& reservoir, const DCTable& dcTable,
                                              const ACTable& acTable, std::int16_t* block, int& predictor) {
    if (!takeDifference(reservoir, dcTable, predictor))
        return -1;
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
