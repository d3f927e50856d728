// TextStretch: a stretch of text in pieces, for texts that are taken apart and joined over and over: joining
// costs nothing that grows with the length, and equal stretches are found by their hash.
#pragma once

#include <cstdint>
#include <list>
#include <string>
#include <string_view>

namespace kestrine::StringUtility {

/// The hash of a text, made so that those of two texts give that of both together.
class TextHash {
public:
    TextHash() = default;
    explicit TextHash(std::u16string_view text) {
        for (const char16_t unit : text) {
            value_ = (value_ * base + unit) % prime;
            shift_ = shift_ * base % prime;
        }
    }

    /// Of the text with the other behind it.
    TextHash followedBy(const TextHash& other) const {
        TextHash both;
        both.value_ = (value_ * other.shift_ + other.value_) % prime;
        both.shift_ = shift_ * other.shift_ % prime;
        return both;
    }

    std::uint64_t value() const { return value_; }

private:
    static constexpr std::uint64_t prime = 4294967291; // the largest of 32 bits
    static constexpr std::uint64_t base = 1000003;

    std::uint64_t value_ = 0;
    std::uint64_t shift_ = 1; ///< base to the power of the length
};

/// The pieces belong to somebody else and must outlive this.
class TextStretch {
public:
    TextStretch() = default;
    explicit TextStretch(std::u16string_view text) : length_(text.size()), hash_(text) {
        if (!text.empty())
            pieces_.push_back(text);
    }

    std::size_t length() const { return length_; }
    const TextHash& hash() const { return hash_; }

    /// Takes the other's pieces.
    void append(TextStretch&& other) {
        pieces_.splice(pieces_.end(), other.pieces_);
        length_ += other.length_;
        hash_ = hash_.followedBy(other.hash_);
    }

    void appendTo(std::u16string& text) const {
        for (const std::u16string_view piece : pieces_)
            text += piece;
    }

    /// Whether `text` begins with this, which is then taken away from it.
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
