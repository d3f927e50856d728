// NSPredicate: a question that a record answers with yes or no. A plain value: "the attribute contains the
// keyword", or the "and" of others.
#pragma once

#include "platform/foundation/NSCollections.h"

#include <variant>

namespace kestrine {

class NSPredicate {
public:
    /// `predicateWithFormat:` with an attribute (a key, or keys joined by dots) and a keyword. The one
    /// format known is "%K contains %@", its operator in any case. Raises NSInvalidArgumentException for
    /// another.
    static NSPredicate predicateWithFormat(const NSString& format, const NSString& attribute,
                                           const NSString& keyword);
    /// `andPredicateWithSubpredicates:`: true when all are; the "and" of nothing is true.
    static NSPredicate andPredicateWithSubpredicates(std::vector<NSPredicate> subpredicates);

    /// `predicateFormat`: `name CONTAINS "red" AND name CONTAINS "blue"`; TRUEPREDICATE for the "and" of
    /// nothing, parentheses around an "and" inside of another.
    NSString predicateFormat() const;

    /// `evaluateWithObject:`: literally and with regard to case. A text contains the keyword as a part, a
    /// list as an element; what is missing contains nothing. Raises NSInvalidArgumentException when the
    /// attribute is neither.
    bool evaluateWithObject(const NSDictionary& record) const;

    bool operator==(const NSPredicate&) const = default;

private:
    struct Comparison {
        NSString attribute;
        NSString keyword;
        bool operator==(const Comparison&) const = default;
    };
    using All = std::vector<NSPredicate>;

    explicit NSPredicate(Comparison comparison) : content_(std::move(comparison)) {}
    explicit NSPredicate(All subpredicates) : content_(std::move(subpredicates)) {}

    static bool isTrue(const Comparison& comparison, const NSDictionary& record);
    static std::u16string formatOf(const All& subpredicates);

    std::variant<Comparison, All> content_;
};

} // namespace kestrine
