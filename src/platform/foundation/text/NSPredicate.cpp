#include "platform/foundation/text/NSPredicate.h"

#include "platform/foundation/NSException.h"

#include <algorithm>

namespace kestrine {

namespace {

constexpr std::u16string_view containsFormat = u"%K CONTAINS %@";
constexpr std::size_t operatorStart = 3;

// Reserved words of the predicate language. A key with such a name is printed with the prefix "#".
constexpr std::u16string_view reservedWords[] = {
    u"ALL",
    u"AND",
    u"ANY",
    u"BEGINSWITH",
    u"BETWEEN",
    u"CAST",
    u"CONTAINS",
    u"ENDSWITH",
    u"FALSE",
    u"FIRST",
    u"IN",
    u"LAST",
    u"LIKE",
    u"MATCHES",
    u"NIL",
    u"NO",
    u"NONE",
    u"NOT",
    u"NULL",
    u"OR",
    u"SELF",
    u"SIZE",
    u"SOME",
    u"SUBQUERY",
    u"TRUE",
    u"TRUEPREDICATE",
    u"FALSEPREDICATE",
    u"YES",
};

std::u16string quoted(std::u16string_view text) {
    std::u16string result = u"\"";
    for (const char16_t unit : text) {
        if (unit == u'"' || unit == u'\\')
            result += u'\\';
        result += unit;
    }
    return result + u'"';
}

std::u16string printedKey(const NSString& key) {
    const std::u16string word = key.uppercased().utf16();
    const bool isReserved =
        std::find(std::begin(reservedWords), std::end(reservedWords), word) != std::end(reservedWords);
    return isReserved ? u"#" + key.utf16() : key.utf16();
}

std::u16string printedKeyPath(const NSString& path) {
    std::u16string result;
    for (const NSString& key : path.componentsSeparatedBy(u"."))
        result.append(result.empty() ? u"" : u".").append(printedKey(key));
    return result;
}

/// `valueForKeyPath:`: nil if a key has no value or the value before another key is not a dictionary.
Object valueForKeyPath(const NSDictionary& record, const NSString& path) {
    const std::vector<NSString> keys = path.componentsSeparatedBy(u".");
    Object value = record.objectForKey(keys.front());
    for (std::size_t i = 1; i < keys.size(); i++) {
        const auto* const inner = dynamic_cast<const NSDictionary*>(value.get());
        if (!inner)
            return nullptr;
        value = inner->objectForKey(keys[i]);
    }
    return value;
}

bool isText(const Object& element, const NSString& text) { return NSString::fromObject(element) == text; }

} // namespace

NSPredicate NSPredicate::predicateWithFormat(const NSString& format, const NSString& attribute,
                                             const NSString& keyword) {
    const bool hasPlaces = format.utf16().starts_with(containsFormat.substr(0, operatorStart));
    if (!hasPlaces || format.uppercased() != NSString(std::u16string(containsFormat)))
        throw NSException(NSInvalidArgumentException,
                          "Unable to parse the format string \"" + format.utf8() + "\"");
    return NSPredicate(Comparison{attribute, keyword});
}

NSPredicate NSPredicate::andPredicateWithSubpredicates(std::vector<NSPredicate> subpredicates) {
    return NSPredicate(std::move(subpredicates));
}

std::u16string NSPredicate::formatOf(const All& subpredicates) {
    if (subpredicates.empty())
        return u"TRUEPREDICATE";
    if (subpredicates.size() == 1)
        return subpredicates.front().predicateFormat().utf16();
    std::u16string format;
    for (const NSPredicate& subpredicate : subpredicates) {
        const All* const inner = std::get_if<All>(&subpredicate.content_);
        const std::u16string text = subpredicate.predicateFormat().utf16();
        format += format.empty() ? u"" : u" AND ";
        format += inner && inner->size() > 1 ? u"(" + text + u")" : text;
    }
    return format;
}

NSString NSPredicate::predicateFormat() const {
    if (const All* const subpredicates = std::get_if<All>(&content_))
        return formatOf(*subpredicates);
    const Comparison& comparison = std::get<Comparison>(content_);
    return printedKeyPath(comparison.attribute) + u" CONTAINS " + quoted(comparison.keyword.utf16());
}

bool NSPredicate::isTrue(const Comparison& comparison, const NSDictionary& record) {
    const Object value = valueForKeyPath(record, comparison.attribute);
    if (!value)
        return false;
    if (const OptionalString text = NSString::fromObject(value))
        return !comparison.keyword.isEmpty() && text->contains(comparison.keyword);
    if (const auto* const list = dynamic_cast<const NSArray*>(value.get()))
        return std::any_of(list->elements().begin(), list->elements().end(),
                           [&](const Object& element) { return isText(element, comparison.keyword); });
    throw NSException(NSInvalidArgumentException, "Can't look for \"" + comparison.keyword.utf8() + "\" in "
                                                      + comparison.attribute.utf8()
                                                      + ", which is neither a string nor a list");
}

bool NSPredicate::evaluateWithObject(const NSDictionary& record) const {
    if (const Comparison* const comparison = std::get_if<Comparison>(&content_))
        return isTrue(*comparison, record);
    const All& subpredicates = std::get<All>(content_);
    return std::all_of(subpredicates.begin(), subpredicates.end(), [&](const NSPredicate& subpredicate) {
        return subpredicate.evaluateWithObject(record);
    });
}

} // namespace kestrine
