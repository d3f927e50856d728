// NSString: immutable text in UTF-16, shared by reference.
#pragma once

#include "platform/foundation/NSObject.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrine {

/// A stretch of text or of a list: `location` is the index of the first element, in UTF-16 code units for
/// text.
struct NSRange {
    std::size_t location = 0;
    std::size_t length = 0;

    std::size_t end() const { return location + length; }
    bool operator==(const NSRange&) const = default;
};

/// What a failed search gives as location.
inline constexpr std::size_t NSNotFound = 0x7fffffffffffffff;

/// A handle on shared text: copying it is cheap and gives the same object, which isSame() can tell.
/// Text made from bytes that are no valid UTF-8 keeps each offending byte as a lone surrogate U+DC80 to
/// U+DCFF, and utf8() gives the very same bytes back. Safe to read from several threads.
class NSString {
public:
    NSString();
    NSString(std::u16string text);
    NSString(const char16_t* text) : NSString(std::u16string(text)) {}

    static NSString fromUTF8(std::string_view bytes);
    /// The text that `object` is; nothing when it is nil or no text.
    static std::optional<NSString> fromObject(const Object& object);
    Object object() const { return storage_; }

    /// The text as bytes. A lone surrogate that stands for no byte becomes U+FFFD.
    std::string utf8() const;
    const std::u16string& utf16() const { return storage_->text; }
    /// Number of UTF-16 code units.
    std::size_t length() const { return utf16().size(); }
    bool isEmpty() const { return utf16().empty(); }
    char16_t operator[](std::size_t index) const { return utf16()[index]; }

    bool operator==(const NSString& other) const { return isSame(other) || utf16() == other.utf16(); }
    std::strong_ordering operator<=>(const NSString& other) const {
        return isSame(other) ? std::strong_ordering::equal : utf16().compare(other.utf16()) <=> 0;
    }
    /// Whether both are the same object, not merely equal.
    bool isSame(const NSString& other) const { return storage_ == other.storage_; }

    NSString operator+(const NSString& other) const { return utf16() + other.utf16(); }
    /// The text in `range`, which must lie inside (`substringWithRange:`).
    NSString substring(NSRange range) const { return utf16().substr(range.location, range.length); }
    bool contains(const NSString& part) const;

    // Paths. All work on the text alone and follow the platform's rules: repeated separators count as one
    // and a trailing one is dropped.

    /// `lastPathComponent`: "/a/b.c" and "b.c/" give "b.c"; "/" gives "/".
    NSString lastPathComponent() const;
    /// `stringByDeletingLastPathComponent`: "/a/b" gives "/a", "/a" gives "/", "a" gives "".
    NSString deletingLastPathComponent() const;
    /// `stringByAppendingPathComponent:`.
    NSString appendingPathComponent(const NSString& component) const;
    /// `pathExtension`, without the dot: "a.jpg" gives "jpg"; ".a", "a." and "a" give "".
    NSString pathExtension() const;
    /// `stringByDeletingPathExtension`: its dot goes too, also when nothing follows the dot.
    NSString deletingPathExtension() const;
    /// `stringByAppendingPathExtension:`: a dot and the extension behind the path; "" and "/" stay.
    NSString appendingPathExtension(const NSString& extension) const;
    /// `stringByExpandingTildeInPath`: "~" and "~/a" begin with the user's home folder, "~name/a" with that
    /// user's; the receiver itself when it begins with no tilde or there is no such user.
    NSString expandingTildeInPath() const;
    /// `pathComponents`: "/a/b" gives "/", "a", "b"; a trailing separator is a last component "/".
    std::vector<NSString> pathComponents() const;

    /// `uppercaseString` and `lowercaseString` by Unicode's rules, without locale. Text beyond ASCII needs
    /// ICU, which is opened then; without it such characters stay as they are.
    NSString uppercased() const;
    NSString lowercased() const;

    /// `componentsSeparatedByString:`: literal, left to right; one piece when `separator` is empty or absent.
    std::vector<NSString> componentsSeparatedBy(const NSString& separator) const;

private:
    struct Storage final : NSObject {
        explicit Storage(std::u16string t) : text(std::move(t)) {}
        const std::u16string text;
    };

    explicit NSString(std::shared_ptr<const Storage> storage) : storage_(std::move(storage)) {}

    std::shared_ptr<const Storage> storage_;
};

/// Text that may be nil.
using OptionalString = std::optional<NSString>;

} // namespace kestrine
