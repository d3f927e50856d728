// Reads any bytes as the attributes and sidecar files of desktops, Macs and file servers. A value that is
// written into them must be read again, and a container must keep its size and its other entries.
#include "fuzz/Require.h"
#include "platform/finder/AppleDouble.h"
#include "platform/finder/StoredForms.h"

#include <algorithm>

namespace {

using namespace kestrine;
using fuzzing::require;

template <class Value>
void checkForm(const StoredForm<Value>& form, ByteView stored, const Value& value) {
    (void)form.read(stored);
    const std::optional<Bytes> changed = form.changed(stored, value);
    if (changed && !changed->empty())
        require(form.changed(*changed, value) == changed);
    if (const std::optional<Bytes> cleared = form.changed(stored, Value()))
        require(form.read(*cleared).value_or(Value()) == Value());
}

void checkContainer(ByteView stored) {
    const Result<AppleDouble> container = AppleDouble::parse(stored);
    if (!container || !container->content(AppleDoubleEntry::comment))
        return;
    const Bytes filled(container->room(AppleDoubleEntry::comment), 'x');
    const Bytes changed = container->withContent(AppleDoubleEntry::comment, filled);
    const Result<AppleDouble> again = AppleDouble::parse(changed);
    require(again.ok() && changed.size() == stored.size());
    require(std::ranges::equal(*again->content(AppleDoubleEntry::comment), filled));
    const auto before = container->content(AppleDoubleEntry::finderInfo);
    const auto after = again->content(AppleDoubleEntry::finderInfo);
    require(before.has_value() == after.has_value() && (!before || std::ranges::equal(*before, *after)));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const ByteView stored(bytes, size);
    const NSString comment = u"caf\u00E9";
    for (const auto* form : {&commentAsText, &commentInPropertyList, &commentInAppleDouble})
        checkForm(*form, stored, comment);
    const FinderInfo information{fourCharacterCode("JPEG"), 0, 0x0004, {1, 2}, 3, {4}};
    for (const auto* form : {&plainFinderInfo, &finderInfoInAppleDouble, &finderInfoInAFPInfo})
        checkForm(*form, stored, information);
    checkContainer(stored);
    return 0;
}
