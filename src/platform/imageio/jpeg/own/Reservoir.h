// Reservoir: the next bits of a scan, in one 64-bit word. It reads ahead without asking where the scan ends
// and without looking for markers: whoever owns the bytes has taken these out and left readable bytes behind
// the end.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace kestrine::jpeg {

inline std::uint64_t loadBigEndian(const std::uint8_t* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return std::endian::native == std::endian::big ? word : __builtin_bswap64(word);
}

/// The first of the next bits is the highest one of `bits`. The `count` (0 to 63) highest are there for sure
/// and end just before `next`; below them stand further bits of the stream or zeros.
struct Reservoir {
    std::uint64_t bits = 0;
    int count = 0;
    const std::uint8_t* next = nullptr;

    explicit Reservoir(const std::uint8_t* start) : next(start) {}

    /// Makes it 56 bits at least. Reads 8 bytes from `next`.
    void refill() {
        bits |= loadBigEndian(next) >> count;
        next += (63 - count) >> 3;
        count |= 56;
    }

    /// Takes `number` (less than 64) bits away, which must be there.
    void drop(int number) {
        bits <<= number & 63;
        count -= number;
    }

    /// Puts back the last `number` bits taken; then at least 56 are there. Reads from the byte before `next`,
    /// which lies behind the start because something has been taken.
    void putBack(int number) {
        count += number;
        next -= count >> 3;
        count &= 7;
        bits = loadBigEndian(next - 1) << (8 - count);
        refill();
    }

    /// Bits from the next one up to `end`; less than 0 when more were taken than there were.
    std::ptrdiff_t bitsBefore(const std::uint8_t* end) const { return (end - next) * 8 + count; }
};

/// The number that extra bits mean which stand at the top of `bits`; `extraShift` is noExtraBits - how many.
/// Numbers from 2^(size-1) on are stored as they are; negative ones as the complement of their magnitude,
/// which thus begins with a 0.
inline int extraValue(std::uint64_t bits, int extraShift) {
    const auto sign = static_cast<std::int64_t>(~bits) >> 63; // -1 when the number is negative
    const auto magnitude =
        static_cast<std::int64_t>((bits ^ static_cast<std::uint64_t>(sign)) >> 1 >> extraShift);
    return static_cast<int>((magnitude ^ sign) - sign);
}

} // namespace kestrine::jpeg
