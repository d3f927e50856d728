#include "platform/imageio/jpeg/own/HuffmanTables.h"

#include <algorithm>

namespace kestrine::jpeg {

namespace {

struct Step {
    int size;  ///< number of extra bits
    int width; ///< in positions along the zigzag
};

/// What an AC symbol does; none for a symbol that no 8-bit picture has.
std::optional<Step> stepOf(int symbol) {
    const int run = symbol >> 4, size = symbol & 15;
    if (size == 0 && run == 0)
        return Step{0, ACEntry::endOfBlock};
    if ((size == 0 && symbol != ACTable::zeroRun) || size > ACTable::largestSize)
        return std::nullopt;
    return Step{size, run + 1};
}

ACEntry entryOf(int codeLength, int symbol) {
    const std::optional<Step> step = stepOf(symbol);
    if (!step)
        return {};
    return {codeLength + step->size, codeLength, noExtraBits - step->size, step->width, 0, 0};
}

BandEntry bandEntryOf(int codeLength, int symbol, int largest) {
    const int run = symbol >> 4, size = symbol & 15;
    if (size == 0 && run < 15)
        return {codeLength, run, BandEntry::endOfBlocks};
    if (size > largest)
        return {};
    return {codeLength, size, run};
}

/// Sets the entries of every code of at most `indexBits` bits, which are those whose index begins with the
/// code. All other entries become Entry().
template <class Entry, std::size_t size, class Make>
void fillByCode(std::array<Entry, size>& entries, int indexBits, const HuffmanCode& code, const Make& make) {
    entries.fill(Entry());
    std::size_t index = 0, symbol = 0;
    for (int length = 1; length <= indexBits; ++length) {
        const std::size_t width = std::size_t{1} << (indexBits - length);
        for (int i = 0; i < code.counts[static_cast<std::size_t>(length)]; ++i, index += width)
            std::fill_n(entries.begin() + static_cast<std::ptrdiff_t>(index), width,
                        make(length, code.symbols[symbol++]));
    }
}

/// `first`, the entry for `index`, with the second symbol added if all its bits lie in the index. `rest` is
/// the one-symbol entry for the index bits after the first symbol; zeros stand in for the unknown bits, so
/// `rest` is valid only if it takes no more than the known ones.
ACEntry withSecondSymbol(const ACEntry& first, unsigned index, const ACEntry& rest) {
    const int known = ACTable::indexBits - first.total();
    if (rest.isSlow() || rest.total() > known)
        return first;
    const int size = noExtraBits - rest.extraShift();
    const unsigned extraBits = (index >> (known - rest.total())) & ((1U << size) - 1);
    const auto value = static_cast<std::uint16_t>(extended(extraBits, size));
    return {first.total() + rest.total(),
            first.codeLength(),
            first.extraShift(),
            first.step1(),
            rest.step1(),
            value};
}

} // namespace

bool CanonicalCode::assign(const HuffmanCode& code) {
    std::uint32_t next = 0;
    int symbols = 0;
    for (std::size_t length = 1; length <= 16; ++length) {
        const std::uint32_t count = code.counts[length];
        offsets_[length] = symbols - static_cast<int>(next);
        next += count;
        symbols += static_cast<int>(count);
        if (count != 0 && next >= 1U << length)
            return false;
        ends_[length] = next << (16 - length);
        next <<= 1;
    }
    symbols_ = code.symbols;
    return true;
}

CanonicalCode::Symbol CanonicalCode::symbolOf(unsigned bits) const {
    for (int length = 1; length <= 16; ++length) {
        const auto at = static_cast<std::size_t>(length);
        if (bits >= ends_[at])
            continue;
        const int number = static_cast<int>(bits >> (16 - length)) + offsets_[at];
        return {length, symbols_[static_cast<std::size_t>(number)]};
    }
    return {};
}

bool DCTable::assign(const HuffmanCode& described) {
    if (!code.assign(described))
        return false;
    std::size_t symbols = 0;
    for (const std::uint8_t count : described.counts)
        symbols += count;
    for (std::size_t i = 0; i < symbols; ++i) {
        if (described.symbols[i] > largestSize)
            return false;
    }
    fillByCode(entries, indexBits, described, [](int length, int size) { return DCEntry(length, size); });
    return true;
}

bool ACTable::assign(const HuffmanCode& described) {
    if (!code.assign(described))
        return false;
    std::array<ACEntry, 1 << indexBits> single;
    fillByCode(single, indexBits, described, entryOf);
    for (unsigned index = 0; index < entries.size(); ++index) {
        const ACEntry& first = single[index];
        const bool mayHaveMore =
            !first.isSlow() && first.step1() != ACEntry::endOfBlock && first.total() < indexBits;
        entries[index] =
            mayHaveMore ? withSecondSymbol(first, index, single[(index << first.total()) % single.size()])
                        : first;
    }
    return true;
}

bool BandTable::assign(const HuffmanCode& described, int largest) {
    largest_ = largest;
    if (!code_.assign(described))
        return false;
    fillByCode(entries, indexBits, described,
               [largest](int length, int symbol) { return bandEntryOf(length, symbol, largest); });
    return true;
}

BandEntry BandTable::longEntry(std::uint64_t bits) const {
    const CanonicalCode::Symbol symbol = code_.symbolOf(static_cast<unsigned>(bits >> 48));
    return symbol.length == 0 ? BandEntry() : bandEntryOf(symbol.length, symbol.value, largest_);
}

} // namespace kestrine::jpeg
