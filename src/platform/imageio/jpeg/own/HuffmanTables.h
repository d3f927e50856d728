// The tables that turn the next bits of a scan into coefficients, made from the codes of a header.
// One look-up in the table of an AC code gives one symbol or two, with everything there is to know about
// them.
#pragma once

#include "platform/imageio/jpeg/own/FrameHeader.h"

namespace kestrine::jpeg {

/// A Huffman code put in order, for looking up symbols by their length: the way for whatever the tables below
/// leave out.
class CanonicalCode {
public:
    struct Symbol {
        int length = 0; ///< of the code, in bits; 0 when no code begins like this
        int value = 0;
    };

    /// False when the code is none: too many codes of a length, or one that consists of ones only, which the
    /// format keeps free.
    bool assign(const HuffmanCode& code);

    /// The symbol that `bits` (16 of them, the first in the highest place) begin with.
    Symbol symbolOf(unsigned bits) const;

private:
    /// For each length: codes of it, written in 16 places, are below `ends_`; a code's symbol stands at its
    /// number plus `offsets_`. The ends never fall from one length to the next.
    std::array<std::uint32_t, 17> ends_{};
    std::array<int, 17> offsets_{};
    std::array<std::uint8_t, 256> symbols_{};
};

/// A symbol is followed by extra bits that say its number. Instead of how many, tables hold this minus how
/// many: a value is cut out by shifting right by one and then by that, which is well defined for none, too.
inline constexpr int noExtraBits = 63;

/// DC: index by the next 9 bits. The code and its extra bits (a DC symbol is their number, 0 to 11) are at
/// most 20 bits. A code longer than the index has `total` 0.
/// One number, so that one load brings it: bits 0-7 total, 8-15 length of the code, 16-23 noExtraBits - size.
class DCEntry {
public:
    constexpr DCEntry() = default;
    constexpr DCEntry(int codeLength, int size)
        : bits_(
            static_cast<std::uint32_t>((codeLength + size) | codeLength << 8 | (noExtraBits - size) << 16)) {}

    int total() const { return static_cast<std::uint8_t>(bits_); } ///< code and extra bits
    int codeLength() const { return static_cast<std::uint8_t>(bits_ >> 8); }
    int extraShift() const { return static_cast<int>(bits_ >> 16); }

private:
    std::uint32_t bits_ = 0;
};

struct DCTable {
    static constexpr int indexBits = 9;
    static constexpr int largestSize = 11;

    /// False when the code cannot be used: unsound, or with a symbol that no 8-bit picture has.
    bool assign(const HuffmanCode& code);

    CanonicalCode code;
    std::array<DCEntry, 1 << indexBits> entries;
};

/// AC: index by the next 11 bits. An entry is one number of 64 bits, so that one load brings it:
///  - bits 0-7: how many bits both symbols take, codes and extra bits together; at most 21 for one symbol (11
///    of code, 10 extra), at most 11 for two
///  - bits 8-15: length of the first symbol's code
///  - bits 16-23: noExtraBits - number of the first symbol's extra bits
///  - bits 24-31: step 1, how far the first symbol moves on along the zigzag
///  - bits 32-39: step 2, likewise; 0 when there is no second symbol
///  - bits 48-63: value of the second symbol's coefficient; 0 when there is none
///
/// A step is run + 1; 16 for the symbol of sixteen zeros; endOfBlock for that symbol, whose value is 0
/// because it has no extra bits. The first symbol may have all its extra bits outside of the index, since its
/// value is cut from the stream. The second is there only if its code and its extra bits lie in the index,
/// for its value lies in the entry. A symbol whose code is longer than the index, or that is odd, has total 0
/// and step `slow`.
class ACEntry {
public:
    static constexpr int endOfBlock = 128;
    static constexpr int slow = 192;

    constexpr ACEntry() : ACEntry(0, 0, noExtraBits, slow, 0, 0) {}
    constexpr ACEntry(int total, int codeLength, int extraShift, int step1, int step2, int value2)
        : bits_(static_cast<std::uint64_t>(total) | static_cast<std::uint64_t>(codeLength) << 8
                | static_cast<std::uint64_t>(extraShift) << 16 | static_cast<std::uint64_t>(step1) << 24
                | static_cast<std::uint64_t>(step2) << 32 | static_cast<std::uint64_t>(value2) << 48) {}

    int total() const { return static_cast<std::uint8_t>(bits_); }
    int codeLength() const { return static_cast<std::uint8_t>(bits_ >> 8); }
    int extraShift() const { return static_cast<std::uint8_t>(bits_ >> 16); }
    int step1() const { return static_cast<std::uint8_t>(bits_ >> 24); }
    int step2() const { return static_cast<std::uint8_t>(bits_ >> 32); }
    std::int16_t value2() const { return static_cast<std::int16_t>(bits_ >> 48); }
    bool isSlow() const { return step1() == slow; }
    /// Bits of the second symbol.
    int total2() const { return total() - codeLength() - (noExtraBits - extraShift()); }

private:
    std::uint64_t bits_;
};

struct ACTable {
    static constexpr int indexBits = 11;
    static constexpr int largestSize = 10;
    static constexpr int zeroRun = 0xF0; ///< the symbol of sixteen zeros

    /// False when the code is unsound. Symbols that no 8-bit picture has may be in it; they are slow.
    bool assign(const HuffmanCode& code);

    CanonicalCode code;
    std::array<ACEntry, 1 << indexBits> entries;
};

/// The number that `size` extra bits mean: 2^(size-1) and up as they are, below that counted down from -1's
/// side.
constexpr int extended(unsigned extraBits, int size) {
    const int value = static_cast<int>(extraBits);
    return size == 0 || (extraBits >> (size - 1)) != 0 ? value : value - (1 << size) + 1;
}

} // namespace kestrine::jpeg
