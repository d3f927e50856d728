// Compares the tables and the reservoir with reading bit by bit.

#include "platform/imageio/jpeg/own/HuffmanTables.h"

#include "platform/host/Bytes.h"
#include "platform/imageio/jpeg/own/Reservoir.h"

#include <gtest/gtest.h>
#include <numeric>
#include <random>

namespace kestrine::jpeg {

using jpeg::ACEntry;
using jpeg::ACTable;
using jpeg::BandEntry;
using jpeg::BandTable;
using jpeg::HuffmanCode;

namespace {

/// A valid code with random numbers of codes per length and symbols in random order.
HuffmanCode randomCode(std::mt19937& random) {
    HuffmanCode code;
    std::iota(code.symbols.begin(), code.symbols.end(), std::uint8_t{0});
    std::shuffle(code.symbols.begin(), code.symbols.end(), random);
    unsigned free = 1, used = 0;
    for (std::size_t length = 1; length <= 16; ++length) {
        free *= 2;
        const unsigned limit = std::min({free - 1, 256 - used, 3 * static_cast<unsigned>(length)});
        const auto count = static_cast<unsigned>(random() % (limit + 1));
        code.counts[length] = static_cast<std::uint8_t>(count);
        free -= count;
        used += count;
    }
    return code;
}

/// Reads `bits`, highest first, one at a time.
class BitByBit {
public:
    explicit BitByBit(std::uint64_t bits) : bits_(bits) {}

    int taken() const { return taken_; }
    unsigned take(int count) {
        unsigned value = 0;
        for (int i = 0; i < count; ++i)
            value = value << 1 | static_cast<unsigned>(bits_ >> (63 - taken_++) & 1);
        return value;
    }

    /// The next symbol; none when no code matches.
    std::optional<int> symbol(const HuffmanCode& code) {
        unsigned first = 0, value = 0;
        std::size_t before = 0;
        for (std::size_t length = 1; length <= 16; ++length) {
            value = value << 1 | take(1);
            if (value - first < code.counts[length])
                return code.symbols[before + value - first];
            before += code.counts[length];
            first = (first + code.counts[length]) * 2;
        }
        return std::nullopt;
    }

private:
    std::uint64_t bits_;
    int taken_ = 0;
};

/// One AC symbol, read bit by bit.
struct PlainSymbol {
    int step, value, codeLength;
};
std::optional<PlainSymbol> plainSymbol(BitByBit& bits, const HuffmanCode& code) {
    const int start = bits.taken();
    const std::optional<int> symbol = bits.symbol(code);
    if (!symbol)
        return std::nullopt;
    const int run = *symbol >> 4, size = *symbol & 15, codeLength = bits.taken() - start;
    if (*symbol == 0)
        return PlainSymbol{ACEntry::endOfBlock, 0, codeLength};
    if (size > ACTable::largestSize || (size == 0 && *symbol != ACTable::zeroRun))
        return std::nullopt;
    return PlainSymbol{run + 1, jpeg::extended(bits.take(size), size), codeLength};
}

/// Whether an entry has the symbols that reading `bits` gives.
::testing::AssertionResult isRight(const ACEntry& entry, std::uint64_t bits, const HuffmanCode& code) {
    BitByBit reader(bits);
    const std::optional<PlainSymbol> first = plainSymbol(reader, code);
    if (!first || first->codeLength > ACTable::indexBits) {
        if (entry.isSlow() && entry.total() == 0)
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "should be slow";
    }
    if (entry.step1() != first->step || entry.codeLength() != first->codeLength
        || jpeg::extraValue(bits << entry.codeLength(), entry.extraShift()) != first->value)
        return ::testing::AssertionFailure() << "another first symbol";
    if (entry.step2() != 0) {
        const std::optional<PlainSymbol> second = plainSymbol(reader, code);
        if (!second || entry.step2() != second->step || entry.value2() != second->value)
            return ::testing::AssertionFailure() << "another second symbol";
        if (reader.taken() > ACTable::indexBits)
            return ::testing::AssertionFailure() << "the index does not contain the whole second symbol";
    }
    if (entry.total() != reader.taken())
        return ::testing::AssertionFailure() << entry.total() << " bits instead of " << reader.taken();
    return ::testing::AssertionSuccess();
}

} // namespace

TEST(HuffmanTables, everyEntryHasTheSymbolsThatReadingBitByBitGives) {
    std::mt19937_64 random(1);
    std::mt19937 randomCodes(2);
    auto table = std::make_unique<ACTable>();
    int pairs = 0;
    for (int i = 0; i < 40; ++i) {
        const HuffmanCode code = randomCode(randomCodes);
        ASSERT_TRUE(table->assign(code));
        for (std::uint64_t index = 0; index < table->entries.size(); ++index) {
            const std::uint64_t bits = index << (64 - ACTable::indexBits) | random() >> ACTable::indexBits;
            ASSERT_TRUE(isRight(table->entries[index], bits, code)) << "index " << index << " of code " << i;
            pairs += table->entries[index].step2() != 0;
        }
    }
    EXPECT_GT(pairs, 1000);
}

TEST(HuffmanTables, everyEntryForABandHasTheSymbolThatReadingBitByBitGives) {
    std::mt19937_64 random(6);
    std::mt19937 randomCodes(7);
    auto table = std::make_unique<BandTable>();
    for (int i = 0; i < 40; ++i) {
        const HuffmanCode code = randomCode(randomCodes);
        const int largest = 1 + i % BandTable::largestSize;
        ASSERT_TRUE(table->assign(code, largest));
        for (int repetition = 0; repetition < 4000; ++repetition) {
            const std::uint64_t bits = random();
            BitByBit reader(bits);
            const std::optional<int> symbol = reader.symbol(code);
            BandEntry entry = table->entries[bits >> (64 - BandTable::indexBits)];
            if (entry.total() == 0)
                entry = table->longEntry(bits);
            const int run = symbol.value_or(0) >> 4, size = symbol.value_or(0) & 15;
            const bool endsBlocks = size == 0 && run < 15;
            if (!symbol || size > largest) {
                ASSERT_EQ(entry.total(), 0);
                continue;
            }
            ASSERT_EQ(entry.codeLength(), reader.taken());
            ASSERT_EQ(entry.step(), endsBlocks ? BandEntry::endOfBlocks : run);
            ASSERT_EQ(entry.extraBits(), endsBlocks ? run : size);
            ASSERT_EQ(entry.total(), entry.codeLength() + entry.extraBits());
        }
    }
}

TEST(HuffmanTables, codesOfEveryLengthAreFoundAndACodeOfOnesIsNot) {
    std::mt19937_64 random(3);
    std::mt19937 randomCodes(4);
    for (int i = 0; i < 100; ++i) {
        const HuffmanCode code = randomCode(randomCodes);
        jpeg::CanonicalCode canonical;
        ASSERT_TRUE(canonical.assign(code));
        for (int repetition = 0; repetition < 200; ++repetition) {
            const std::uint64_t bits = random();
            BitByBit reader(bits);
            const std::optional<int> expected = reader.symbol(code);
            const auto found = canonical.symbolOf(static_cast<unsigned>(bits >> 48));
            ASSERT_EQ(found.length, expected ? reader.taken() : 0);
            ASSERT_EQ(found.value, expected.value_or(0));
        }
        EXPECT_EQ(canonical.symbolOf(0xFFFF).length, 0);
    }
}

TEST(HuffmanTables, codesWithOnesOnlyOrTooManyOfALengthAreRefused) {
    HuffmanCode code;
    code.counts[1] = 2;
    EXPECT_FALSE(jpeg::CanonicalCode().assign(code));
    code.counts[1] = 1;
    code.counts[2] = 1;
    EXPECT_TRUE(jpeg::CanonicalCode().assign(code));
    code.counts[2] = 2;
    EXPECT_FALSE(jpeg::CanonicalCode().assign(code));
    code = {};
    code.counts[16] = 255;
    EXPECT_TRUE(jpeg::CanonicalCode().assign(code));
}

TEST(Reservoir, givesTheBitsInOrderWhenBitsAreTakenAndPutBack) {
    std::mt19937 random(5);
    Bytes bytes(6000);
    for (std::uint8_t& byte : bytes)
        byte = static_cast<std::uint8_t>(random());
    const auto bitsAt = [&bytes](std::size_t position, int count) {
        std::uint64_t value = 0;
        for (int i = 0; i < count; ++i, ++position)
            value = value << 1 | (bytes[position / 8] >> (7 - position % 8) & 1U);
        return value;
    };
    jpeg::Reservoir reservoir(bytes.data());
    reservoir.refill();
    std::size_t position = 0;
    while (position < 8 * (bytes.size() - 20)) {
        ASSERT_GE(reservoir.count, 56);
        ASSERT_LE(reservoir.count, 63);
        ASSERT_EQ(reservoir.bits >> 8, bitsAt(position, 56)) << "at bit " << position;
        ASSERT_EQ(reservoir.bitsBefore(bytes.data() + bytes.size()),
                  static_cast<std::ptrdiff_t>(8 * bytes.size() - position));
        const int taken = static_cast<int>(random() % 57), putBack = static_cast<int>(random() % 12);
        reservoir.drop(taken);
        position += static_cast<std::size_t>(taken);
        if (putBack <= taken) {
            reservoir.putBack(putBack);
            position -= static_cast<std::size_t>(putBack);
        }
        reservoir.refill();
    }
}

} // namespace kestrine::jpeg
