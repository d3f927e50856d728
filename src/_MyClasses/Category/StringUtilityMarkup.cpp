#include "_MyClasses/Category/BracketedSpans.h"
#include "_MyClasses/Category/Replacements.h"
#include "_MyClasses/Category/StringUtility.h"

namespace kestrine::StringUtility {

namespace {

// The order matters: "&amp;lt;" becomes "&lt;".
constexpr Replacement entities[] = {
    {u"&lt;", u"<"}, {u"&gt;", u">"}, {u"&amp;", u"&"}, {u"&quot;", u"\""}, {u"&nbsp;", u" "},
};

constexpr Replacement lineEnds[] = {{u"\r\n", u"\n"}, {u"\r", u"\n"}};

} // namespace

NSString removeAllHTMLTag(const NSString& receiver) {
    if (!receiver.contains(u"<"))
        return receiver;
    return arrangeHTMLString(withoutBracketedSpans(receiver.utf16(), u'<', u'>', EmptySpan::stops));
}

NSString arrangeHTMLString(const NSString& receiver) { return replacedInOrder(receiver, entities); }

NSString replaceReturnCode(const NSString& receiver) { return replacedInOrder(receiver, lineEnds); }

} // namespace kestrine::StringUtility
