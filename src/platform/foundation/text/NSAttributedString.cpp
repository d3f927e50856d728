#include "platform/foundation/text/NSAttributedString.h"

#include "platform/foundation/NSException.h"

namespace kestrine {

namespace {

Object valueIn(const NSAttributedString::Attributes& attributes, const NSString& name) {
    const auto entry = attributes.find(name);
    return entry == attributes.end() ? nullptr : entry->second;
}

} // namespace

NSAttributedString::NSAttributedString(NSString text) : text_(std::move(text)), runs_{{0, {}}} {}

/// Starts a run at `index` with the attributes of the run around it.
void NSAttributedString::splitAt(std::size_t index) {
    const auto next = runs_.upper_bound(index);
    runs_.try_emplace(index, std::prev(next)->second);
}

void NSAttributedString::addAttribute(const NSString& name, const Object& value, NSRange range) {
    if (range.location > length() || range.length > length() - range.location)
        throw NSException(NSRangeException, "the range exceeds the string");
    if (range.length == 0)
        return;
    splitAt(range.location);
    splitAt(range.end());
    for (auto run = runs_.find(range.location); run->first != range.end(); ++run)
        run->second.insert_or_assign(name, value);
}

Object NSAttributedString::attribute(const NSString& name, std::size_t index, NSRange* effectiveRange) const {
    if (index >= length())
        throw NSException(NSRangeException, "the index exceeds the string");
    auto next = runs_.upper_bound(index);
    auto run = std::prev(next);
    const Object value = valueIn(run->second, name);
    if (!effectiveRange)
        return value;
    while (run != runs_.begin() && valueIn(std::prev(run)->second, name) == value)
        --run;
    while (next != runs_.end() && valueIn(next->second, name) == value)
        ++next;
    const std::size_t end = next == runs_.end() ? length() : next->first;
    *effectiveRange = {run->first, end - run->first};
    return value;
}

} // namespace kestrine
