// Reservoir: the next bits of a scan, in one 64-bit word. It reads ahead without checking for markers or for
// the end of the scan: the owner of the bytes (ScanBytes) has removed the markers, and readable bytes follow
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

/// The next bit is the highest one of `bits`. The `count` (0 to 63) highest bits are valid and end just
/// before `next`; below them are further bits of the stream, or zeros.
struct Reservoir {
    std::uint64_t bits = 0;
    int count = 0;
    const std::uint8_t* next = nullptr;

    explicit Reservoir(const std::uint8_t* start) : next(start) {}

    /// Makes at least 56 bits valid. Reads 8 bytes from `next`.
    void refill() {
        bits |= loadBigEndian(next) >> count;
        next += (63 - count) >> 3;
        count |= 56;
    }

    /// Removes the next `number` bits, which must be valid; less than 64.
    void drop(int number) {
        bits <<= number & 63;
        count -= number;
    }

    /// Puts back the last `number` removed bits; then at least 56 bits are valid. Reads from the byte before
    /// `next`, which exists because bits have been removed.
    void putBack(int number) {
        count += number;
        next -= count >> 3;
        count &= 7;
        bits = loadBigEndian(next - 1) << (8 - count);
        refill();
    }

    /// Number of bits from the next one up to `end`; negative when more bits were removed than there were.
    std::ptrdiff_t bitsBefore(const std::uint8_t* end) const { return (end - next) * 8 + count; }
};

/// The number that the extra bits at the top of `bits` stand for; `extraShift` is noExtraBits minus their
/// number. A positive number is stored as it is and begins with a 1; a negative one is stored as the
/// complement of its magnitude and begins with a 0.
inline int extraValue(std::uint64_t bits, int extraShift) {
    const auto sign = static_cast<std::int64_t>(~bits) >> 63; // -1 for a negative number, else 0
    const auto magnitude =
        static_cast<std::int64_t>((bits ^ static_cast<std::uint64_t>(sign)) >> 1 >> extraShift);
    return static_cast<int>((magnitude ^ sign) - sign);
}

} // namespace kestrine::jpeg
