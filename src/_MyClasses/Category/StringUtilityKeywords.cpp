#include "_MyClasses/Category/QuotedSpans.h"
#include "_MyClasses/Category/StringUtility.h"
#include "_MyClasses/Category/StringUtilityTexts.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/text/NSStringSearch.h"

#include <algorithm>
#include <limits>

namespace kestrine::StringUtility {

namespace {

// Search options of the platform. NSBackwardsSearch only has an effect together with NSAnchoredSearch.
constexpr unsigned NSBackwardsSearch = 4;
constexpr unsigned NSAnchoredSearch = 8;

constexpr int lastDay = 31;

NSString textOfKey(const Object& key) {
    if (const OptionalString text = NSString::fromObject(key))
        return *text;
    if (const auto* const number = dynamic_cast<const NSNumber*>(key.get()))
        return NSString::fromUTF8(number->stringValue());
    throw NSException(NSInvalidArgumentException, "a key must be a string or a number");
}

/// Whether `text` contains `key`; with NSAnchoredSearch only at the start, or with NSBackwardsSearch at the
/// end.
bool occurs(const NSString& text, const NSString& key, unsigned options) {
    if (!(options & NSAnchoredSearch))
        return rangeOfString(text, key, options).length > 0;
    const std::size_t length = std::min(key.length(), text.length());
    const std::size_t start = options & NSBackwardsSearch ? text.length() - length : 0;
    return rangeOfString(text, key, options, {start, length}).length > 0;
}

/// Replaces all separators by commas.
NSString withCommas(const NSString& text, NSBundle& bundle) {
    NSString result = *replaceStringFrom(text, u" ", u",");
    for (const char16_t* key : {u"Space Character", u"Kuten Character"})
        result = *replaceStringFrom(result, localizedText(bundle, key), u",");
    return result;
}

bool isBlank(char16_t unit) { return unit == u' ' || (unit >= u'\t' && unit <= u'\r'); }
bool isDigit(char16_t unit) { return unit >= u'0' && unit <= u'9'; }

/// Parses blanks, an optional plus sign and digits; ignores the rest. Limited to the maximum of the type.
std::int32_t intValue(const NSString& piece) {
    const std::u16string& text = piece.utf16();
    auto unit = std::find_if_not(text.begin(), text.end(), isBlank);
    if (unit != text.end() && *unit == u'+')
        ++unit;
    std::int64_t value = 0;
    for (; unit != text.end() && isDigit(*unit); ++unit)
        value = std::min<std::int64_t>(value * 10 + (*unit - u'0'), std::numeric_limits<std::int32_t>::max());
    return static_cast<std::int32_t>(value);
}

/// Appends the days of "first-last"; ignores a minus at the end.
void appendRange(std::vector<NSNumber>& numbers, const NSString& piece) {
    const bool isOpen = piece[piece.length() - 1] == u'-';
    const NSString range = piece.substring({0, piece.length() - (isOpen ? 1 : 0)});
    const std::vector<NSString> ends = range.componentsSeparatedBy(u"-");
    const std::int32_t last = std::min(intValue(ends.back()), lastDay);
    for (std::int32_t day = intValue(ends.front()); day <= last; day++)
        numbers.emplace_back(day);
}

} // namespace

bool hasAnyKey(const NSString& receiver, const std::vector<Object>& keys, unsigned options) {
    if (receiver.isEmpty())
        return false;
    return std::any_of(keys.begin(), keys.end(),
                       [&](const Object& key) { return occurs(receiver, textOfKey(key), options); });
}

bool hasAnyKey(const NSString& receiver, const std::vector<Object>& keys) {
    return hasAnyKey(receiver, keys, NSCaseInsensitiveSearch);
}

bool stringHasAnyKey(const NSString& receiver, const std::vector<NSString>& keys) {
    return std::any_of(keys.begin(), keys.end(),
                       [&](const NSString& key) { return !key.isEmpty() && receiver.contains(key); });
}

bool stringHasAllKeys(const NSString& receiver, const std::vector<NSString>& keys) {
    return std::all_of(keys.begin(), keys.end(),
                       [&](const NSString& key) { return key.isEmpty() || receiver.contains(key); });
}

std::vector<NSString> separateStringKeyToArray(const NSString& receiver, NSBundle& bundle) {
    QuotedSpans quoted = takeQuotedSpans(receiver.utf16(), u'"', EmptySpan::stops);
    std::vector<NSString> words(quoted.spans.begin(), quoted.spans.end());
    const NSString rest = *removeString(std::move(quoted.rest), u"\"");
    if (rest.isEmpty())
        return words;
    for (const NSString& piece : withCommas(rest, bundle).componentsSeparatedBy(u","))
        words.push_back(piece);
    return words;
}

NSPredicate andPredicateForAttribute(const NSString& receiver, const NSString& attribute, NSBundle& bundle) {
    std::vector<NSPredicate> predicates;
    for (const NSString& word : separateStringKeyToArray(receiver, bundle))
        if (!word.isEmpty())
            predicates.push_back(NSPredicate::predicateWithFormat(u"%K contains %@", attribute, word));
    return NSPredicate::andPredicateWithSubpredicates(std::move(predicates));
}

std::vector<NSNumber> separateDateKeyToArray(const NSString& receiver, NSBundle& bundle) {
    std::vector<NSNumber> numbers;
    if (receiver.isEmpty())
        return numbers;
    NSString working = withCommas(receiver, bundle);
    for (const char16_t* key : {u"Minus Character", u"Tilde Character"})
        working = *replaceStringFrom(working, localizedText(bundle, key), u"-");
    for (const NSString& piece : working.componentsSeparatedBy(u",")) {
        if (piece.contains(u"-"))
            appendRange(numbers, piece);
        else
            numbers.emplace_back(intValue(piece));
    }
    return numbers;
}

} // namespace kestrine::StringUtility
