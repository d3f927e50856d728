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

} // namespace

template <class Sample>
void unpackIntegers(ByteView packed, unsigned bits, bool areIndices, std::vector<Sample>& samples) {
    if (bits == 8 * sizeof(Sample)) {
        std::memcpy(samples.data(), packed.data(), samples.size() * sizeof(Sample));
        return;
    }
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

void unpackFloats(ByteView packed, std::vector<std::uint16_t>& samples) {
    for (std::size_t i = 0; i < samples.size(); ++i) {
        float stored = 0;
        std::memcpy(&stored, packed.data() + i * sizeof stored, sizeof stored);
        const float share = stored > 0 ? std::min(stored, 1.0f) : 0;
        samples[i] = static_cast<std::uint16_t>(std::lround(share * float{maximum<std::uint16_t>}));
    }
}

} // namespace kestrine::tiff
