#include "platform/imageio/jpeg/own/BlockDecoder.h"

namespace kestrine::jpeg {

namespace {

/// Takes a symbol whose code is longer than the table's index. A symbol that no 8-bit picture has damages the
/// block. The code takes at most 16 of the 56 bits after the refill, the extra bits at most 10.
SettledBlock takeSlowSymbol(Reservoir reservoir, const ACTable& table, int position, std::int16_t* block) {
    reservoir.refill();
    const CanonicalCode::Symbol symbol = table.code.symbolOf(static_cast<unsigned>(reservoir.bits >> 48));
    const int run = symbol.value >> 4, size = symbol.value & 15;
    const int next = position + run + 1;
    const SettledBlock damaged{reservoir, -1, false};
    if (symbol.length == 0)
        return damaged;
    reservoir.drop(symbol.length);
    reservoir.refill();
    if (symbol.value == 0)
        return {reservoir, position, false};
    const bool isKnown = (size != 0 && size <= ACTable::largestSize) || symbol.value == ACTable::zeroRun;
    if (!isKnown || next > 63)
        return damaged;
    block[offsetAlongZigzag[static_cast<std::size_t>(next)]] =
        static_cast<std::int16_t>(extraValue(reservoir.bits, noExtraBits - size));
    reservoir.drop(size);
    reservoir.refill();
    return {reservoir, next, next < 63};
}

} // namespace

SettledBlock settleBlock(Reservoir reservoir, const ACTable& table, ACEntry entry, int position,
                         std::int16_t* block) {
    if (entry.isSlow())
        return takeSlowSymbol(reservoir, table, position - ACEntry::slow, block);
    if (position - entry.step2() != 63)
        return {reservoir, -1, false};
    reservoir.putBack(entry.total2());
    return {reservoir, 63, false};
}

SlowDC slowDC(Reservoir reservoir, const DCTable& table) {
    const CanonicalCode::Symbol symbol = table.code.symbolOf(static_cast<unsigned>(reservoir.bits >> 48));
    if (symbol.length == 0)
        return {reservoir, std::nullopt};
    reservoir.drop(symbol.length);
    const int difference = extraValue(reservoir.bits, noExtraBits - symbol.value);
    reservoir.drop(symbol.value);
    reservoir.refill();
    return {reservoir, difference};
}

} // namespace kestrine::jpeg
