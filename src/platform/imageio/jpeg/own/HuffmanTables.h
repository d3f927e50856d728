// Tables that turn the next bits of a scan into coefficients, made from the Huffman codes of the header.
// One look-up in an AC table gives one or two complete symbols.
#pragma once

#include "platform/imageio/jpeg/own/FrameHeader.h"

namespace kestrine::jpeg {

/// Finds symbols length by length. Used for the codes that are too long for the tables below.
class CanonicalCode {
public:
    struct Symbol {
        int length = 0; ///< of the code, in bits; 0 when the bits begin with no code
        int value = 0;
    };

    /// Returns false when the code is invalid: too many codes of a length, or a code of ones only, which the
    /// format reserves.
    bool assign(const HuffmanCode& code);

    /// The symbol with which `bits` begins: 16 bits, the first one highest.
    Symbol symbolOf(unsigned bits) const;

private:
    /// Indexed by code length: codes of a length, shifted to 16 bits, are below its element of `ends_`; the
    /// index of a code's symbol is the code plus the element of `offsets_`. The ends never decrease with the
    /// length.
    std::array<std::uint32_t, 17> ends_{};
    std::array<int, 17> offsets_{};
    std::array<std::uint8_t, 256> symbols_{};
};

/// The tables hold the number of a symbol's extra bits as noExtraBits minus that number. Shifting right by
/// one and then by the difference extracts the value; both shifts are defined even for 0 extra bits.
inline constexpr int noExtraBits = 63;

/// An entry of a DC table, which is indexed by the next 9 bits. A DC symbol is the number of its extra bits,
/// 0 to 11, so code and extra bits take at most 20 bits. For a code longer than the index, `total` is 0. All
/// fields are packed into one number so that one load reads them: bits 0-7 total, 8-15 length of the code,
/// 16-23 noExtraBits - size.
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

    /// Returns false when the code cannot be used: it is invalid or has a symbol that no 8-bit picture has.
    bool assign(const HuffmanCode& described);

    CanonicalCode code;
    std::array<DCEntry, 1 << indexBits> entries;
};

/// An entry of an AC table, which is indexed by the next 11 bits. All fields are packed into 64 bits so that
/// one load reads them:
///  - bits 0-7: how many bits both symbols take, codes and extra bits together; at most 21 for one symbol (11
///    of code, 10 extra), at most 11 for two
///  - bits 8-15: length of the first symbol's code
///  - bits 16-23: noExtraBits - number of the first symbol's extra bits
///  - bits 24-31: step 1, by how many positions the first symbol advances along the zigzag
///  - bits 32-39: step 2, the same for the second symbol; 0 when there is none
///  - bits 48-63: value of the second symbol's coefficient; 0 when there is none
///
/// A step is run + 1, 16 for the symbol of sixteen zeros, and `endOfBlock` for the end of the block, whose
/// value is 0 because it has no extra bits. The extra bits of the first symbol may lie outside the index,
/// since its value is read from the stream. A second symbol is present only if its code and its extra bits
/// lie in the index, since its value is stored in the entry. If the code is longer than the index, or no
/// 8-bit picture has the symbol, total is 0 and step 1 is `slow`.
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
    /// Bits of the second symbol: code and extra bits.
    int total2() const { return total() - codeLength() - (noExtraBits - extraShift()); }

private:
    std::uint64_t bits_;
};

struct ACTable {
    static constexpr int indexBits = 11;
    static constexpr int largestSize = 10;
    static constexpr int zeroRun = 0xF0; ///< the symbol of sixteen zeros

    /// Returns false when the code is invalid. Symbols that no 8-bit picture has get slow entries.
    bool assign(const HuffmanCode& described);

    CanonicalCode code;
    std::array<ACEntry, 1 << indexBits> entries;
};

/// An entry of the table for one scan of AC coefficients of a progressive file, which is indexed by the next
/// 10 bits. A symbol is a run of zeros and a coefficient, or a run of blocks that have ended. All fields are
/// packed into one number: bits 0-7 how many bits the symbol takes, code and extra bits together; 8-15 length
/// of the code; 16-23 noExtraBits - number of extra bits; 24-31 the step.
///
/// A step is the run of zeros, or `endOfBlocks` when blocks have ended; the extra bits then are the lower
/// bits of their number. If the code is longer than the index, or no progressive picture has the symbol, the
/// total is 0.
class BandEntry {
public:
    static constexpr int endOfBlocks = 128;

    constexpr BandEntry() = default;
    constexpr BandEntry(int codeLength, int extraBits, int step)
        : bits_(static_cast<std::uint32_t>(codeLength + extraBits)
                | static_cast<std::uint32_t>(codeLength) << 8
                | static_cast<std::uint32_t>(noExtraBits - extraBits) << 16
                | static_cast<std::uint32_t>(step) << 24) {}

    int total() const { return static_cast<std::uint8_t>(bits_); }
    int codeLength() const { return static_cast<std::uint8_t>(bits_ >> 8); }
    int extraShift() const { return static_cast<std::uint8_t>(bits_ >> 16); }
    int extraBits() const { return noExtraBits - extraShift(); }
    int step() const { return static_cast<int>(bits_ >> 24); }
    bool isEndOfBlocks() const { return step() == endOfBlocks; }

private:
    std::uint32_t bits_ = 0;
};

struct BandTable {
    static constexpr int indexBits = 10;
    static constexpr int largestSize = 10;

    /// Returns false when the code is invalid. Symbols with coefficients of more than `largest` bits have no
    /// entries.
    bool assign(const HuffmanCode& described, int largest);

    /// The entry for the symbol at the top of `bits`, of which 16 are used; for symbols whose entry in the
    /// table has no total. The total is still 0 if there is no symbol.
    BandEntry longEntry(std::uint64_t bits) const;

    std::array<BandEntry, 1 << indexBits> entries;

private:
    CanonicalCode code_;
    int largest_ = 0;
};

/// The number that `size` extra bits stand for: from 2^(size-1) on the bits themselves, below that the bits
/// minus (2^size - 1).
constexpr int extended(unsigned extraBits, int size) {
    const int value = static_cast<int>(extraBits);
    return size == 0 || (extraBits >> (size - 1)) != 0 ? value : value - (1 << size) + 1;
}

} // namespace kestrine::jpeg
