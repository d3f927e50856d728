// NSString: an immutable UTF-16 string, shared by reference.
#pragma once

#include "platform/foundation/NSObject.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrine {

/// A range of a string or an array. For strings, location and length count UTF-16 code units.
struct NSRange {
    std::size_t location = 0; ///< index of the first element
    std::size_t length = 0;

    std::size_t end() const { return location + length; }
    bool operator==(const NSRange&) const = default;
};

/// The location that a failed search returns.
inline constexpr std::size_t NSNotFound = 0x7fffffffffffffff;

/// A reference to a shared string. A copy refers to the same object, which isSame() detects.
/// A string from bytes that are not valid UTF-8 keeps each invalid byte as a lone surrogate from U+DC80 to
/// U+DCFF, and utf8() returns the original bytes. Safe to read from several threads.
class NSString {
public:
    NSString();
    NSString(std::u16string text);
    NSString(const char16_t* text) : NSString(std::u16string(text)) {}

    static NSString fromUTF8(std::string_view bytes);
    /// The string that `object` refers to; empty if `object` is nil or not a string.
    static std::optional<NSString> fromObject(const Object& object);
    Object object() const { return storage_; }

    /// The string in UTF-8. A lone surrogate that does not stand for a byte becomes U+FFFD.
    std::string utf8() const;
    const std::u16string& utf16() const { return storage_->text; }
    /// The number of UTF-16 code units.
    std::size_t length() const { return utf16().size(); }
    bool isEmpty() const { return utf16().empty(); }
    char16_t operator[](std::size_t index) const { return utf16()[index]; }

    bool operator==(const NSString& other) const { return isSame(other) || utf16() == other.utf16(); }
    std::strong_ordering operator<=>(const NSString& other) const {
        return isSame(other) ? std::strong_ordering::equal : utf16().compare(other.utf16()) <=> 0;
    }
    /// Whether both are the same object. Equal strings may be different objects.
    bool isSame(const NSString& other) const { return storage_ == other.storage_; }

    NSString operator+(const NSString& other) const { return utf16() + other.utf16(); }
    /// `substringWithRange:`: `range` must be inside the string. Throws std::out_of_range if its location is
    /// not.
    NSString substring(NSRange range) const { return utf16().substr(range.location, range.length); }
    bool contains(const NSString& part) const;

    // Paths. Only expandingTildeInPath() depends on the system. Repeated separators count as one, and a
    // separator at the end is removed.

    /// `lastPathComponent`: "/a/b.c" and "b.c/" give "b.c"; "/" gives "/".
    NSString lastPathComponent() const;
    /// `stringByDeletingLastPathComponent`: "/a/b" gives "/a", "/a" gives "/", "a" gives "".
    NSString deletingLastPathComponent() const;
    /// `stringByAppendingPathComponent:`.
    NSString appendingPathComponent(const NSString& component) const;
    /// `pathExtension`, without the dot: "a.jpg" gives "jpg"; ".a", "a." and "a" give "".
    NSString pathExtension() const;
    /// `stringByDeletingPathExtension`: also removes the dot, even if nothing follows it.
    NSString deletingPathExtension() const;
    /// `stringByAppendingPathExtension:`: appends a dot and the extension. "" and "/" stay unchanged.
    NSString appendingPathExtension(const NSString& extension) const;
    /// `stringByExpandingTildeInPath`: replaces "~" at the start by the user's home folder, and "~name" by
    /// that user's home folder. Returns the receiver itself if it does not start with a tilde or there is no
    /// such user.
    NSString expandingTildeInPath() const;
    /// `pathComponents`: "/a/b" gives "/", "a", "b"; a separator at the end gives a last component "/".
    std::vector<NSString> pathComponents() const;

    /// `uppercaseString` and `lowercaseString` by the rules of Unicode, independent of the locale. A string
    /// that is not ASCII needs ICU. Without ICU the characters outside ASCII stay unchanged.
    NSString uppercased() const;
    NSString lowercased() const;

    /// `componentsSeparatedByString:`: searches literally from left to right. One component if `separator` is
    /// empty or does not occur.
    std::vector<NSString> componentsSeparatedBy(const NSString& separator) const;

private:
    struct Storage final : NSObject {
        explicit Storage(std::u16string t) : text(std::move(t)) {}
        const std::u16string text;
    };

    explicit NSString(std::shared_ptr<const Storage> storage) : storage_(std::move(storage)) {}

    std::shared_ptr<const Storage> storage_;
};

/// A string that may be nil.
using OptionalString = std::optional<NSString>;

} // namespace kestrine
