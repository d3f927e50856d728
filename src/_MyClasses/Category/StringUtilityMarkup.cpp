#include "_MyClasses/Category/SpanRemoval.h"
#include "_MyClasses/Category/StringUtility.h"

namespace kestrine::StringUtility {

namespace {

constexpr std::size_t emptyTag = 2; // the length of "<>"

struct Replacement {
    const char16_t* text;
    const char16_t* by;
};

// The order counts: "&amp;lt;" ends as "&lt;".
constexpr Replacement entities[] = {
    {u"&lt;", u"<"}, {u"&gt;", u">"}, {u"&amp;", u"&"}, {u"&quot;", u"\""}, {u"&nbsp;", u" "},
};

/// Tag after tag, until there is none or it is empty.
NSString withoutTags(const NSString& text) {
    // No tag can become empty when the removals do not influence each other.
    if (!text.contains(u"<>"))
        if (std::optional<std::u16string> swept = removedInOneSweep(text.utf16(), u"<", u">"))
            return std::move(*swept);
    NSString working = text;
    while (true) {
        const NSRange tag = rangeOfStringFrom(working, u"<", u">");
        if (tag.length <= emptyTag)
            return working;
        working = *removeString(working, working.substring(tag));
    }
}

} // namespace

NSString removeAllHTMLTag(const NSString& receiver) {
    return receiver.contains(u"<") ? arrangeHTMLString(withoutTags(receiver)) : receiver;
}

NSString arrangeHTMLString(const NSString& receiver) {
    NSString working = receiver;
    for (const Replacement& entity : entities)
        working = *replaceStringFrom(working, entity.text, entity.by);
    return working;
}

NSString replaceReturnCode(const NSString& receiver) {
    return *replaceStringFrom(*replaceStringFrom(receiver, u"\r\n", u"\n"), u"\r", u"\n");
}

} // namespace kestrine::StringUtility
