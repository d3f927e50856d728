// NSAttributedString: text whose stretches carry named attributes.
#pragma once

#include "platform/foundation/text/NSString.h"

#include <map>

namespace kestrine {

/// The attribute whose value is an NSParagraphStyle.
inline constexpr const char16_t* NSParagraphStyleAttributeName = u"NSParagraphStyle";

/// A value: copies are independent of each other, the attributes' values are shared.
class NSAttributedString {
public:
    using Attributes = std::map<NSString, Object>;

    /// `initWithString:`: a text without any attribute.
    explicit NSAttributedString(NSString text);

    const NSString& string() const { return text_; }
    std::size_t length() const { return text_.length(); }

    /// `addAttribute:value:range:`: replaces the value that the attribute had there. Raises
    /// NSRangeException when `range` reaches past the end.
    void addAttribute(const NSString& name, const Object& value, NSRange range);

    /// `attribute:atIndex:effectiveRange:`: nil when there is none. `effectiveRange`, unless null, is set to
    /// the longest stretch around `index` in which the value is the same object. Raises NSRangeException
    /// when `index` lies behind the last code unit.
    Object attribute(const NSString& name, std::size_t index, NSRange* effectiveRange = nullptr) const;

private:
    using Runs = std::map<std::size_t, Attributes>;

    void splitAt(std::size_t index);

    NSString text_;
    Runs runs_; // by where they start; each reaches to the next one or to the end
};

} // namespace kestrine
