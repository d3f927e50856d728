// NSPredicate: a condition on a dictionary: "attribute CONTAINS keyword", or a conjunction of other
// predicates.
#pragma once

#include "platform/foundation/NSCollections.h"

#include <variant>

namespace kestrine {

class NSPredicate {
public:
    /// `predicateWithFormat:` with an attribute (a key, or keys separated by dots) and a keyword. The only
    /// supported format is "%K contains %@", with the operator in upper or lower case. Raises
    /// NSInvalidArgumentException for any other format.
    static NSPredicate predicateWithFormat(const NSString& format, const NSString& attribute,
                                           const NSString& keyword);
    /// `andPredicateWithSubpredicates:`: true if all subpredicates are true. An empty conjunction is true.
    static NSPredicate andPredicateWithSubpredicates(std::vector<NSPredicate> subpredicates);

    /// `predicateFormat`: `name CONTAINS "red" AND name CONTAINS "blue"`. An empty conjunction is
    /// TRUEPREDICATE. A conjunction inside another one has parentheses.
    NSString predicateFormat() const;

    /// `evaluateWithObject:`: case-sensitive. A string contains the keyword as a substring, an array as an
    /// element. A missing attribute gives false. Raises NSInvalidArgumentException if the attribute is
    /// neither a string nor an array.
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
