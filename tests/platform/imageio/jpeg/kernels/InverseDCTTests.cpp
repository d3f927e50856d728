#include "platform/imageio/jpeg/kernels/InverseDCT.h"

#include "platform/imageio/jpeg/kernels/InverseDCT_reference.h"
#include "tests/platform/coregraphics/kernels/EveryTarget.h"

#include <algorithm>
#include <array>
#include <random>
#include <vector>

namespace kestrine::kernels {

namespace {

constexpr int sizes[] = {8, 4, 2, 1};

/// Row-major position of each zigzag index.
constexpr std::uint8_t zigzag[dctCoefficients] = {
    0,  1,  8,  16, 9,  2,  3,  10, 17, 24, 32, 25, 18, 11, 4,  5,  12, 19, 26, 33, 40, 48,
    41, 34, 27, 20, 13, 6,  7,  14, 21, 28, 35, 42, 49, 56, 57, 50, 43, 36, 29, 22, 15, 23,
    30, 37, 44, 51, 58, 59, 52, 45, 38, 31, 39, 46, 53, 60, 61, 54, 47, 55, 62, 63};

/// How to make a group: the largest numbers, the percentage of coefficients that are not 0, and the last
/// zigzag index.
struct GroupKind {
    const char* name;
    int largestCoefficient, largestQuantiser, percent, lastNonZero;
};

constexpr GroupKind kinds[] = {
    {"camera picture", 60, 20, 20, 63},
    {"all coefficients", 1023, 8, 100, 63},
    {"a few low coefficients", 300, 12, 70, 9},
    {"one beyond the low ones", 300, 12, 70, 10},
    {"means", 1023, 16, 100, 0},
    {"first row and column", 1023, 16, 100, 2},
    {"sums that saturate", 1023, 32, 60, 63},
    {"products that wrap", 1023, 255, 30, 63},
    {"low products that wrap", 32767, 65535, 80, 9},
    {"means that wrap", 32767, 65535, 100, 0},
    {"the largest numbers", 32767, 65535, 100, 63},
};

/// Percentage of coefficients with the largest value.
constexpr int percentAtTheLimit = 20;

struct Group {
    alignas(64) std::array<std::int16_t, dctCoefficients * dctLanes> coefficients{};
    std::array<std::uint16_t, dctCoefficients> quantisation{};

    Group(const GroupKind& kind, std::mt19937& random) {
        const auto upTo = [&random](int limit) {
            return std::uniform_int_distribution<int>(0, limit)(random);
        };
        for (auto& quantiser : quantisation)
            quantiser = static_cast<std::uint16_t>(1 + upTo(kind.largestQuantiser - 1));
        for (int i = 0; i <= kind.lastNonZero; ++i)
            for (int lane = 0; lane < dctLanes; ++lane) {
                if (upTo(99) >= kind.percent)
                    continue;
                const bool isLargest = upTo(99) < percentAtTheLimit;
                const int magnitude = isLargest ? kind.largestCoefficient : upTo(kind.largestCoefficient);
                coefficients[std::size_t{zigzag[i]} * dctLanes + static_cast<std::size_t>(lane)] =
                    static_cast<std::int16_t>(upTo(1) == 0 ? magnitude : ~magnitude);
            }
    }
};

/// The samples, with space around the squares that must not change.
struct Samples {
    std::vector<std::uint8_t> bytes = std::vector<std::uint8_t>(12000, 77);

    std::uint8_t* first() { return bytes.data() + 64; }
    bool operator==(const Samples&) const = default;
};

/// Distances from lane to lane and row to row that a decoder of `size` uses.
struct Strides {
    std::ptrdiff_t lane, row;
};

std::vector<Strides> stridesFor(int size) {
    return {{size, size * dctLanes},
            {2 * size, 2 * size * dctLanes + 5},
            {4 * size, 4 * size * dctLanes},
            {size * size, size}};
}

} // namespace

TEST(InverseDCT, everyTargetGivesTheSamplesOfThePlainLoops) {
    testing::onEveryTarget([] {
        std::mt19937 random(1);
        for (const GroupKind& kind : kinds)
            for (int repetition = 0; repetition < 20; ++repetition) {
                const Group group(kind, random);
                for (const int size : sizes)
                    for (const Strides& strides : stridesFor(size)) {
                        Samples samples, expected;
                        inverseDCT(size, group.coefficients.data(), group.quantisation.data(),
                                   kind.lastNonZero, samples.first(), strides.lane, strides.row);
                        reference::inverseDCT(size, group.coefficients.data(), group.quantisation.data(), 63,
                                              expected.first(), strides.lane, strides.row);
                        ASSERT_EQ(samples, expected)
                            << kind.name << ", size " << size << ", lanes " << strides.lane << " bytes apart";
                    }
            }
    });
}

TEST(InverseDCT, aLargerLastIndexGivesTheSameSamples) {
    testing::onEveryTarget([] {
        std::mt19937 random(3);
        for (const GroupKind& kind : kinds) {
            const Group group(kind, random);
            for (const int size : sizes) {
                Samples exact, generous;
                inverseDCT(size, group.coefficients.data(), group.quantisation.data(), kind.lastNonZero,
                           exact.first(), size, size * dctLanes);
                inverseDCT(size, group.coefficients.data(), group.quantisation.data(), 63, generous.first(),
                           size, size * dctLanes);
                ASSERT_EQ(exact, generous) << kind.name << ", size " << size;
            }
        }
    });
}

TEST(InverseDCT, aGroupNeedsNoAlignment) {
    std::mt19937 random(4);
    const Group group(kinds[0], random);
    std::vector<std::int16_t> shifted(group.coefficients.size() + 1);
    std::ranges::copy(group.coefficients, shifted.begin() + 1);
    testing::onEveryTarget([&] {
        for (const int size : sizes) {
            Samples samples, expected;
            inverseDCT(size, shifted.data() + 1, group.quantisation.data(), 63, samples.first(), size, 128);
            reference::inverseDCT(size, group.coefficients.data(), group.quantisation.data(), 63,
                                  expected.first(), size, 128);
            ASSERT_EQ(samples, expected) << "size " << size;
        }
    });
}

TEST(InverseDCT, aDCCoefficientAloneFillsTheSquareAndIsClamped) {
    struct Case {
        std::int16_t mean;
        std::uint8_t sample;
    };
    const std::array<std::uint16_t, dctCoefficients> ones = [] {
        std::array<std::uint16_t, dctCoefficients> all{};
        all.fill(1);
        return all;
    }();
    for (const Case& c : {Case{0, 128},
                          {8, 129},
                          {3, 128},
                          {4, 129},
                          {-4, 128},
                          {-5, 127},
                          {1016, 255},
                          {2000, 255},
                          {-1024, 0},
                          {-2000, 0}})
        for (const int size : sizes) {
            std::array<std::int16_t, dctCoefficients * dctLanes> group{};
            std::fill_n(group.begin(), dctLanes, c.mean);
            std::vector<std::uint8_t> squares(static_cast<std::size_t>(size * size * dctLanes));
            inverseDCT(size, group.data(), ones.data(), 0, squares.data(), size, size * dctLanes);
            EXPECT_EQ(squares, std::vector<std::uint8_t>(squares.size(), c.sample))
                << c.mean << ", size " << size;
        }
}

} // namespace kestrine::kernels
