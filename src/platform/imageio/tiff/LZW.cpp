#include "platform/imageio/tiff/LZW.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kestrine::tiff {

namespace {

// From the TIFF specification: codes of 9 to 12 bits, the highest bit first.
constexpr unsigned clearCode = 256, endCode = 257, firstFreeCode = 258;
constexpr unsigned maxWidth = 12;

/// What a code stands for, in one word: up to seven bytes themselves, the first one lowest, and in the
/// highest byte their number in bits. A longer string is its place in the output: where it begins and its
/// length.
class LZWString {
public:
    explicit constexpr LZWString(std::uint64_t word) : word_(word) {}
    static constexpr LZWString ofByte(std::uint8_t byte) { return LZWString(std::uint64_t{8} << 56 | byte); }
    static LZWString at(std::size_t begin, std::size_t length) {
        return LZWString(inOutput | std::uint64_t{length} << 32 | begin);
    }
    /// The value for codes that stand for no string.
    static constexpr LZWString none() { return LZWString(~std::uint64_t{0}); }

    std::uint64_t word() const { return word_; }
    /// Whether one more byte makes a string that still fits the word.
    bool isExtensible() const { return word_ < std::uint64_t{56} << 56; }
    bool isInWord() const { return word_ < inOutput; }
    std::size_t length() const { return isInWord() ? lengthInWord() : word_ >> 32 & 0xFF'FFFF; }
    /// The length of a string that is in the word.
    std::size_t lengthInWord() const { return word_ >> 59; }
    /// Where the string begins in the output; only if it is not in the word.
    std::size_t begin() const { return word_ & 0xFFFF'FFFF; }
    /// The string with one more byte; only if it is extensible.
    LZWString extendedBy(std::uint64_t byte) const {
        return LZWString(word_ + (byte << (word_ >> 56)) + (std::uint64_t{8} << 56));
    }

private:
    static constexpr std::uint64_t inOutput = std::uint64_t{0xFF} << 56;

    std::uint64_t word_;
};

template <std::endian order>
std::uint64_t wordInOrder(std::uint64_t word) {
    return std::endian::native == order ? word : __builtin_bswap64(word);
}

/// Eight bytes, the first one highest.
std::uint64_t codesAt(const std::uint8_t* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return wordInOrder<std::endian::big>(word);
}

/// Copies whole groups of 16 bytes; the last one may go beyond `count`.
void copyGroups(const std::uint8_t* from, std::size_t count, std::uint8_t* to) {
    for (std::size_t i = 0; i < count; i += 16) {
        std::uint8_t group[16];
        std::memcpy(group, from + i, sizeof group);
        std::memcpy(to + i, group, sizeof group);
    }
}

/// The state that changes with each short string. It is not a part of LZWRun, so that it can stay in
/// registers.
struct ShortStrings {
    std::uint64_t* strings;
    std::uint8_t* out; ///< with room for a word
    unsigned free;
    LZWString previous; ///< extensible

    /// Decodes a code if it stands for a known string of at most six bytes.
    [[gnu::always_inline]] bool decode(unsigned code) {
        const LZWString string(strings[code]);
        // One branch is faster than two.
        if (static_cast<unsigned>(code >= free) | static_cast<unsigned>(!string.isExtensible()))
            return false;
        const std::uint64_t bytes = wordInOrder<std::endian::little>(string.word());
        std::memcpy(out, &bytes, sizeof bytes);
        out += string.lengthInWord();
        strings[free++] = previous.extendedBy(string.word() & 0xFF).word();
        previous = string;
        return true;
    }
};

/// The decompression of one strip or tile.
class LZWRun {
public:
    LZWRun(std::uint64_t* strings, ByteView codes, std::span<std::uint8_t> into)
        : strings_(strings), codes_(codes), begin_(into.data()), end_(begin_ + into.size()), out_(begin_) {}

    bool run() {
        if (nextCode() != clearCode || !startOver())
            return false;
        while (out_ < end_) {
            decodeShortStrings();
            if (!decodeNext())
                return false;
        }
        return true;
    }

private:
    /// A code has one bit more as soon as the next string would get a code of all ones.
    unsigned width() const { return std::min(maxWidth, static_cast<unsigned>(std::bit_width(free_ + 1))); }
    std::size_t room() const { return static_cast<std::size_t>(end_ - out_); }

    /// The next code, or one that is never possible if there are not enough bits.
    unsigned nextCode() {
        const unsigned bits = width();
        if (bit_ + bits > 8 * codes_.size())
            return LZWDecoder::tableSize;
        std::uint32_t window = 0; // a code lies in at most three bytes
        for (std::size_t byte = bit_ / 8; byte < bit_ / 8 + 3; ++byte)
            window = window << 8 | (byte < codes_.size() ? codes_[byte] : 0U);
        const std::uint32_t code = window >> (24 - bit_ % 8 - bits) & ((1U << bits) - 1);
        bit_ += bits;
        return code;
    }

    /// Clears the table and decodes the code after that, which must be a single byte.
    bool startOver() {
        free_ = firstFreeCode;
        unsigned code = clearCode;
        while (code == clearCode)
            code = nextCode();
        if (code > 255)
            return false;
        previous_ = LZWString(strings_[code]);
        if (room() > 0)
            *out_++ = static_cast<std::uint8_t>(code);
        return true;
    }

    /// Decodes the next code, whatever it is.
    bool decodeNext() {
        const unsigned code = nextCode();
        if (code == clearCode)
            return startOver();
        if (code == endCode || code > free_ || free_ == LZWDecoder::tableSize)
            return false;
        const LZWString known = code == free_ ? previous_ : LZWString(strings_[code]);
        *out_ = known.isInWord() ? static_cast<std::uint8_t>(known.word()) : begin_[known.begin()];
        const LZWString added = previousAndByte();
        strings_[free_++] = added.word();
        previous_ = code == free_ - 1 ? added : known;
        append(previous_);
        return true;
    }

    /// The previous string and the first byte of the one after it, which is in the output already.
    LZWString previousAndByte() const {
        if (previous_.isExtensible())
            return previous_.extendedBy(*out_);
        const std::size_t length = previous_.length();
        return LZWString::at(static_cast<std::size_t>(out_ - begin_) - length, length + 1);
    }

    /// Appends the string to the output, as far as there is room.
    void append(LZWString string) {
        const std::size_t count = std::min(string.length(), room());
        if (string.isInWord()) {
            for (std::size_t i = 0; i < count; ++i)
                out_[i] = static_cast<std::uint8_t>(string.word() >> 8 * i);
        } else if (count + 16 <= room()) {
            copyGroups(begin_ + string.begin(), count, out_);
        } else {
            std::memmove(out_, begin_ + string.begin(), count);
        }
        out_ += count;
    }

    /// Decodes codes of strings of up to six bytes, as long as these come, of a constant width and far from
    /// the ends of the codes and the output. This is most of the work in photographs.
    void decodeShortStrings() {
        switch (width()) {
        case 9:
            return decodeShortStrings<9>();
        case 10:
            return decodeShortStrings<10>();
        case 11:
            return decodeShortStrings<11>();
        default:
            return decodeShortStrings<12>();
        }
    }

    template <unsigned bits>
    void decodeShortStrings() {
        constexpr unsigned lastFree = bits == maxWidth ? LZWDecoder::tableSize : (1U << bits) - 1;
        constexpr unsigned codesAtOnce = 4; // with up to 7 bits before them they fit a word
        if (!previous_.isExtensible() || codes_.size() < sizeof(std::uint64_t))
            return;
        const std::uint8_t* const codes = codes_.data();
        const std::uint8_t* const end = end_;
        const std::size_t lastBit = 8 * (codes_.size() - sizeof(std::uint64_t));
        ShortStrings now{strings_, out_, free_, previous_};
        std::size_t bit = bit_;
        bool areShort = true;
        while (areShort && now.free + codesAtOnce <= lastFree && bit <= lastBit
               && static_cast<std::size_t>(end - now.out) >= codesAtOnce * sizeof(std::uint64_t)) {
            const std::uint64_t word = codesAt(codes + bit / 8) << bit % 8;
            const unsigned free = now.free;
            const auto code = [word](unsigned i) {
                return static_cast<unsigned>(word << i * bits >> (64 - bits));
            };
            areShort =
                now.decode(code(0)) && now.decode(code(1)) && now.decode(code(2)) && now.decode(code(3));
            bit += (now.free - free) * bits;
        }
        out_ = now.out;
        free_ = now.free;
        previous_ = now.previous;
        bit_ = bit;
    }

    std::uint64_t* const strings_;
    const ByteView codes_;
    std::size_t bit_ = 0; ///< of codes_, where the next code begins
    std::uint8_t* const begin_;
    std::uint8_t* const end_;
    std::uint8_t* out_; ///< where the next string goes
    unsigned free_ = firstFreeCode;
    LZWString previous_ = LZWString::none();
};

} // namespace

LZWDecoder::LZWDecoder() {
    strings_.fill(LZWString::none().word());
    for (unsigned byte = 0; byte < clearCode; ++byte)
        strings_[byte] = LZWString::ofByte(static_cast<std::uint8_t>(byte)).word();
}

bool LZWDecoder::decode(ByteView codes, std::span<std::uint8_t> into) {
    return LZWRun(strings_.data(), codes, into).run();
}

} // namespace kestrine::tiff
