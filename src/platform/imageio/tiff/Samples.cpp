#include "platform/imageio/tiff/Samples.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

namespace kestrine::tiff {

namespace {

template <class Sample>
constexpr std::uint32_t maximum = std::numeric_limits<Sample>::max();

/// Reads packed samples that do not fill whole bytes.
class BitReader {
public:
    explicit BitReader(ByteView packed) : packed_(packed) {}

    std::uint32_t next(unsigned bits) {
        while (available_ < bits) {
            waiting_ = waiting_ << 8 | packed_[position_++];
            available_ += 8;
        }
        available_ -= bits;
        return waiting_ >> available_ & ((1u << bits) - 1);
    }

private:
    const ByteView packed_;
    std::size_t position_ = 0;
    std::uint32_t waiting_ = 0;
    unsigned available_ = 0;
};

template <class Sample>
void unpackWords(ByteView packed, std::vector<Sample>& samples) {
    constexpr std::uint64_t largest = std::numeric_limits<std::uint32_t>::max();
    for (std::size_t i = 0; i < samples.size(); ++i) {
        std::uint32_t stored = 0;
        std::memcpy(&stored, packed.data() + i * sizeof stored, sizeof stored);
        samples[i] = static_cast<Sample>((stored * std::uint64_t{maximum<Sample>} + largest / 2) / largest);
    }
}

/// The number of which these are the bits: a sign, five bits of exponent and ten of fraction.
float halfFloat(std::uint16_t bits) {
    const int exponent = bits >> 10 & 0x1F, fraction = bits & 0x3FF;
    constexpr int special = 31, bias = 15, fractionBits = 10;
    float size = exponent == 0
                     ? std::ldexp(static_cast<float>(fraction), 1 - bias - fractionBits)
                     : std::ldexp(static_cast<float>(fraction + 1024), exponent - bias - fractionBits);
    if (exponent == special)
        size = fraction == 0 ? std::numeric_limits<float>::infinity() : 0;
    return (bits & 0x8000) != 0 ? -size : size;
}

template <class Stored, class Value>
void unpackReals(ByteView packed, std::vector<std::uint16_t>& samples, const Value& valueOf) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        Stored stored{};
        std::memcpy(&stored, packed.data() + i * sizeof stored, sizeof stored);
        const auto value = valueOf(stored);
        const auto share = value > 0 ? std::min<decltype(value)>(value, 1) : 0;
        samples[i] = static_cast<std::uint16_t>(std::lround(share * maximum<std::uint16_t>));
    }
}

} // namespace

template <class Sample>
void unpackIntegers(ByteView packed, unsigned bits, bool areIndices, std::vector<Sample>& samples) {
    if (bits == 8 * sizeof(Sample)) {
        std::memcpy(samples.data(), packed.data(), samples.size() * sizeof(Sample));
        return;
    }
    if (bits == 32)
        return unpackWords(packed, samples);
    BitReader reader(packed);
    const std::uint32_t largest = (1u << bits) - 1;
    for (Sample& sample : samples) {
        const std::uint32_t stored = reader.next(bits);
        sample =
            static_cast<Sample>(areIndices ? stored : (stored * maximum<Sample> + largest / 2) / largest);
    }
}

template void unpackIntegers(ByteView, unsigned, bool, std::vector<std::uint8_t>&);
template void unpackIntegers(ByteView, unsigned, bool, std::vector<std::uint16_t>&);

template <class Sample>
void shiftSigned(std::vector<Sample>& samples) {
    for (Sample& sample : samples)
        sample ^= static_cast<Sample>(Sample{1} << (8 * sizeof(Sample) - 1));
}

template void shiftSigned(std::vector<std::uint8_t>&);
template void shiftSigned(std::vector<std::uint16_t>&);

void unpackFloats(ByteView packed, unsigned bits, std::vector<std::uint16_t>& samples) {
    if (bits == 16)
        unpackReals<std::uint16_t>(packed, samples, halfFloat);
    else if (bits == 32)
        unpackReals<float>(packed, samples, [](float value) { return value; });
    else
        unpackReals<double>(packed, samples, [](double value) { return value; });
}

} // namespace kestrine::tiff
