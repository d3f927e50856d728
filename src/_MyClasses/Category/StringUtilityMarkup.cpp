#include "_MyClasses/Category/BracketedSpans.h"
#include "_MyClasses/Category/StringUtility.h"

namespace kestrine::StringUtility {

namespace {

struct Replacement {
    const char16_t* text;
    const char16_t* by;
};

// The order counts: "&amp;lt;" ends as "&lt;".
constexpr Replacement entities[] = {
    {u"&lt;", u"<"}, {u"&gt;", u">"}, {u"&amp;", u"&"}, {u"&quot;", u"\""}, {u"&nbsp;", u" "},
};

} // namespace

NSString removeAllHTMLTag(const NSString& receiver) {
    if (!receiver.contains(u"<"))
        return receiver;
    return arrangeHTMLString(withoutBracketedSpans(receiver.utf16(), u'<', u'>', EmptySpan::endsTaking));
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
