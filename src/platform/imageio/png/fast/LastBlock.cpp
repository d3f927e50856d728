#include "platform/imageio/png/fast/LastBlock.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <span>

namespace kestrine::png {

namespace {

constexpr unsigned maxCodeBits = 15;
constexpr unsigned endOfBlock = 256, firstLength = 257;
constexpr std::size_t maxLiteralCodes = 288, maxDistanceCodes = 32;

/// Extra bits after the codes of lengths, from firstLength, and of distances. The last codes of each do not
/// occur.
constexpr std::array<std::uint8_t, maxLiteralCodes - firstLength> lengthExtraBits = {
    0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
constexpr std::array<std::uint8_t, maxDistanceCodes> distanceExtraBits = {
    0, 0, 0, 0, 1, 1, 2, 2, 3, 3, 4, 4, 5, 5, 6, 6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

class Bits {
public:
    explicit Bits(ByteView bytes) : bytes_(bytes) {}

    /// Makes at least 56 bits available; after the end of the data they are 0.
    void refill() {
        if (bytes_.size() - next_ >= sizeof(std::uint64_t)) {
            std::uint64_t word = 0;
            std::memcpy(&word, bytes_.data() + next_, sizeof word);
            if constexpr (std::endian::native == std::endian::big)
                word = __builtin_bswap64(word);
            bits_ |= word << count_;
            next_ += (63 - count_) / 8;
            count_ |= 56;
        } else {
            refillSlowly();
        }
    }

    std::uint64_t peek() const { return bits_; }
    void skip(unsigned count) {
        bits_ >>= count;
        count_ -= count;
    }
    unsigned take(unsigned count) {
        const auto value = static_cast<unsigned>(bits_ & ((std::uint64_t{1} << count) - 1));
        skip(count);
        return value;
    }

    std::size_t position() const { return 8 * next_ + padding_ - count_; }
    bool isPastEnd() const { return position() > 8 * bytes_.size(); }

    /// Continues at a position in bits, which may be after the end.
    void seek(std::size_t position) {
        next_ = std::min(position / 8, bytes_.size());
        padding_ = position / 8 > next_ ? 8 * (position / 8 - next_) : 0;
        bits_ = count_ = 0;
        refill();
        skip(position % 8);
    }

private:
    void refillSlowly() {
        for (; count_ < 56; count_ += 8)
            if (next_ < bytes_.size())
                bits_ |= std::uint64_t{bytes_[next_++]} << count_;
            else
                padding_ += 8;
    }

    const ByteView bytes_;
    std::size_t next_ = 0;    ///< the byte that follows
    std::size_t padding_ = 0; ///< bits after the end that were made available
    std::uint64_t bits_ = 0;
    unsigned count_ = 0;
};

/// What a code means; codes of code lengths mean other numbers.
enum Meaning : std::uint8_t { noCode, literal, length, end };

struct Step {
    std::uint8_t meaning = noCode;
    std::uint8_t bits = 0; ///< of the code and after it
};

/// A canonical code: what to skip for the symbol that begins the next bits.
class Code {
public:
    /// `lengths`: those of the codes of all symbols, 0 for symbols that do not occur. False if there are more
    /// codes than fit.
    bool build(std::span<const std::uint8_t> lengths, Step (*stepOf)(unsigned symbol)) {
        first_.fill({});
        longest_.fill({});
        unsigned code = 0;
        for (unsigned bits = 1; bits <= maxCodeBits; ++bits, code <<= 1)
            for (unsigned symbol = 0; symbol < lengths.size(); ++symbol)
                if (lengths[symbol] == bits) {
                    if (code >> bits != 0)
                        return false;
                    Step step = stepOf(symbol);
                    step.bits = static_cast<std::uint8_t>(step.bits + bits);
                    place(reversed(code++, bits), bits, step);
                }
        return true;
    }

    Step next(std::uint64_t bits) const {
        const Step step = first_[bits % first_.size()];
        return step.meaning != noCode ? step : longest_[bits % longest_.size()];
    }

    /// The step for a code of at most firstBits bits; `noCode` for a longer one.
    Step ofShort(std::uint64_t bits) const { return first_[bits % first_.size()]; }

    static constexpr unsigned firstBits = 10;

private:
    static unsigned reversed(unsigned code, unsigned bits) {
        unsigned result = 0;
        for (; bits > 0; --bits, code >>= 1)
            result = result << 1 | (code & 1);
        return result;
    }

    void place(unsigned code, unsigned bits, Step step) {
        const std::span<Step> table = bits <= firstBits ? std::span<Step>(first_) : std::span<Step>(longest_);
        for (std::size_t at = code; at < table.size(); at += std::size_t{1} << bits)
            table[at] = step;
    }

    std::array<Step, 1 << firstBits> first_;     ///< by the next bits, for codes that are not longer
    std::array<Step, 1 << maxCodeBits> longest_; ///< for longer codes
};

/// How many bits all literals take that lie completely in the next bits.
class LiteralRuns {
public:
    void build(const Code& code) {
        for (unsigned bits = 0; bits < runs_.size(); ++bits) {
            unsigned used = 0;
            for (;;) {
                const Step step = code.ofShort(bits >> used);
                if (step.meaning != literal || used + step.bits > runBits)
                    break;
                used += step.bits;
            }
            runs_[bits] = static_cast<std::uint8_t>(used);
        }
    }

    unsigned next(std::uint64_t bits) const { return runs_[bits % runs_.size()]; }

private:
    static constexpr unsigned runBits = 12;
    std::array<std::uint8_t, 1 << runBits> runs_;
};

class Walk {
public:
    explicit Walk(ByteView deflated) : bits_(deflated) {}

    std::optional<LastBlock> lastBlock() {
        for (;;) {
            const std::size_t begin = bits_.position();
            bits_.refill();
            const bool isLast = bits_.take(1) != 0;
            if (!skipBlock(bits_.take(2)) || bits_.isPastEnd())
                return std::nullopt;
            if (isLast)
                return LastBlock{begin, bits_.position()};
        }
    }

private:
    bool skipBlock(unsigned type) {
        switch (type) {
        case 0:
            return skipStored();
        case 1:
            return buildFixed() && skipCodes();
        case 2:
            return buildDynamic() && skipCodes();
        default:
            return false;
        }
    }

    bool skipStored() {
        bits_.seek((bits_.position() + 7) / 8 * 8);
        const unsigned length = bits_.take(16);
        if ((length ^ bits_.take(16)) != 0xFFFF)
            return false;
        bits_.seek(bits_.position() + 8 * std::size_t{length});
        return true;
    }

    static Step literalStep(unsigned symbol) {
        if (symbol < endOfBlock)
            return {literal, 0};
        return symbol == endOfBlock ? Step{end, 0} : Step{length, lengthExtraBits[symbol - firstLength]};
    }
    static Step distanceStep(unsigned symbol) { return {length, distanceExtraBits[symbol]}; }

    bool buildFixed() {
        std::array<std::uint8_t, maxLiteralCodes> literals;
        for (std::size_t symbol = 0; symbol < literals.size(); ++symbol)
            literals[symbol] = symbol < 144 ? 8 : symbol < 256 ? 9 : symbol < 280 ? 7 : 8;
        std::array<std::uint8_t, maxDistanceCodes> distances;
        distances.fill(5);
        return build(literals, distances);
    }

    bool buildDynamic() {
        constexpr std::array<std::uint8_t, 19> order = {16, 17, 18, 0, 8,  7, 9,  6, 10, 5,
                                                        11, 4,  12, 3, 13, 2, 14, 1, 15};
        const std::size_t literals = bits_.take(5) + firstLength, distances = bits_.take(5) + 1,
                          used = bits_.take(4) + 4;
        std::array<std::uint8_t, order.size()> lengthBits{};
        bits_.refill();
        for (std::size_t i = 0; i < used; ++i) {
            if (i == order.size() / 2)
                bits_.refill();
            lengthBits[order[i]] = static_cast<std::uint8_t>(bits_.take(3));
        }
        // The lengths of codes are themselves coded; distances_ serves as their code first.
        if (literals > maxLiteralCodes || !distances_.build(lengthBits, [](unsigned symbol) {
                return Step{static_cast<std::uint8_t>(noCode + 1 + symbol), 0};
            }))
            return false;
        std::array<std::uint8_t, maxLiteralCodes + maxDistanceCodes> lengths{};
        const std::span<std::uint8_t> all = std::span(lengths).first(literals + distances);
        return readLengths(all) && build(all.first(literals), all.subspan(literals));
    }

    bool readLengths(std::span<std::uint8_t> lengths) {
        for (std::size_t i = 0; i < lengths.size();) {
            bits_.refill();
            const Step step = distances_.next(bits_.peek());
            if (step.meaning == noCode)
                return false;
            bits_.skip(step.bits);
            const unsigned symbol = step.meaning - (noCode + 1U);
            std::uint8_t repeated = 0;
            std::size_t times = 1;
            if (symbol < 16) {
                repeated = static_cast<std::uint8_t>(symbol);
            } else if (symbol == 16) {
                if (i == 0)
                    return false;
                repeated = lengths[i - 1];
                times = 3 + bits_.take(2);
            } else {
                times = symbol == 17 ? 3 + bits_.take(3) : 11 + bits_.take(7);
            }
            if (times > lengths.size() - i)
                return false;
            std::ranges::fill(lengths.subspan(i, times), repeated);
            i += times;
        }
        return true;
    }

    bool build(std::span<const std::uint8_t> literals, std::span<const std::uint8_t> distances) {
        if (!literals_.build(literals, literalStep) || !distances_.build(distances, distanceStep))
            return false;
        runs_.build(literals_);
        return true;
    }

    /// Skips everything to the end of a block.
    bool skipCodes() {
        for (;;) {
            bits_.refill();
            for (int i = 0; i < 3; ++i) // at most 36 bits
                bits_.skip(runs_.next(bits_.peek()));
            bits_.refill();
            const Step step = literals_.next(bits_.peek());
            bits_.skip(step.bits);
            if (step.meaning == end)
                return true;
            if (step.meaning == noCode || bits_.isPastEnd())
                return false;
            if (step.meaning == length) { // at most 20 bits of 56 are used
                const Step distance = distances_.next(bits_.peek());
                if (distance.meaning == noCode)
                    return false;
                bits_.skip(distance.bits);
            }
        }
    }

    Bits bits_;
    Code literals_, distances_;
    LiteralRuns runs_;
};

} // namespace

std::optional<LastBlock> lastBlockOf(ByteView deflated) { return Walk(deflated).lastBlock(); }

} // namespace kestrine::png
