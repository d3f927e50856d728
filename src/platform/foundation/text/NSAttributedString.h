// NSAttributedString: a string with attributes for ranges of characters.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <map>

namespace kestrine {

/// The name of the attribute for an NSParagraphStyle.
inline constexpr const char16_t* NSParagraphStyleAttributeName = u"NSParagraphStyle";

/// Copies are independent, but share the values of the attributes.
class NSAttributedString {
public:
    using Attributes = std::map<NSString, Object>;

    /// `initWithString:`: a string without attributes.
    explicit NSAttributedString(NSString text);

    const NSString& string() const { return text_; }
    std::size_t length() const { return text_.length(); }

    /// `addAttribute:value:range:`: replaces the previous value of the attribute in the range. Raises
    /// NSRangeException if `range` exceeds the string.
    void addAttribute(const NSString& name, const Object& value, NSRange range);

    /// `attribute:atIndex:effectiveRange:`: nil if there is none. If `effectiveRange` is not null, it is set
    /// to the longest range around `index` in which the value is the same object. Raises NSRangeException if
    /// `index` is not less than the length.
    Object attribute(const NSString& name, std::size_t index, NSRange* effectiveRange = nullptr) const;

private:
    using Runs = std::map<std::size_t, Attributes>;

    void splitAt(std::size_t index);

    NSString text_;
    Runs runs_; // by start; each run ends at the start of the next one or at the end of the string
};

} // namespace kestrine
