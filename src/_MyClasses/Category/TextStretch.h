// TextStretch: a string in pieces that is joined in constant time and compared by its hash.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

namespace kestrine::StringUtility {

/// A hash of a string. The hash of two joined strings is computed from their hashes.
class TextHash {
public:
    TextHash() = default;
    explicit TextHash(std::u16string_view text) {
        for (const char16_t unit : text) {
            value_ = (value_ * base + unit) % prime;
            shift_ = shift_ * base % prime;
        }
    }

    /// The hash of this string followed by the other.
    TextHash followedBy(const TextHash& other) const {
        TextHash both;
        both.value_ = (value_ * other.shift_ + other.value_) % prime;
        both.shift_ = shift_ * other.shift_ % prime;
        return both;
    }

    std::uint64_t value() const { return value_; }

private:
    static constexpr std::uint64_t prime = 4294967291; // the largest prime of 32 bits
    static constexpr std::uint64_t base = 1000003;

    std::uint64_t value_ = 0;
    std::uint64_t shift_ = 1; ///< base to the power of the length
};

/// The pieces are not owned and must outlive the stretch.
class TextStretch {
public:
    TextStretch() = default;
    explicit TextStretch(std::u16string_view text) : length_(text.size()), hash_(text) {
        if (!text.empty())
            pieces_.push_back(text);
    }

    std::size_t length() const { return length_; }
    const TextHash& hash() const { return hash_; }

    /// Leaves the other stretch without pieces.
    void append(TextStretch&& other) {
        pieces_.splice(pieces_.end(), other.pieces_);
        length_ += other.length_;
        hash_ = hash_.followedBy(other.hash_);
    }

    void appendTo(std::u16string& text) const {
        for (const std::u16string_view piece : pieces_)
            text += piece;
    }

    /// Whether `text` begins with this stretch, which is then removed from `text`.
    bool isTakenFrom(std::u16string_view& text) const {
        for (const std::u16string_view piece : pieces_) {
            if (!text.starts_with(piece))
                return false;
            text.remove_prefix(piece.size());
        }
        return true;
    }

private:
    std::list<std::u16string_view> pieces_;
    std::size_t length_ = 0; ///< in code units
    TextHash hash_;
};

} // namespace kestrine::StringUtility
