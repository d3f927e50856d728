#include "commandline/PresetSelection.h"

#include <algorithm>

namespace kestrine {

namespace {

std::vector<NSString> argumentsFrom(const std::vector<NSString>& arguments, std::size_t position) {
    const std::size_t first = std::min(position, arguments.size());
    return {arguments.begin() + static_cast<std::ptrdiff_t>(first), arguments.end()};
}

ResizeSets firstSetNamed(const NSString& name, const ResizeSets& stored) {
    const auto found = std::ranges::find_if(stored, [&](const auto& set) { return set->name() == name; });
    return found == stored.end() ? ResizeSets() : ResizeSets{*found};
}

ResizeSets selectedSets(const NSIndexSet& selection, const ResizeSets& stored) {
    ResizeSets sets;
    for (std::size_t index = selection.firstIndex(); index < stored.size();
         index = selection.indexGreaterThanIndex(index))
        sets.push_back(stored[index]);
    return sets;
}

} // namespace

PresetSelection selectPresets(const std::vector<NSString>& arguments, const ResizeSets& stored,
                              const NSIndexSet& selection) {
    if (std::ranges::find(arguments, NSString(u"-l")) != arguments.end())
        return {true, {}, {}};
    const auto option =
        static_cast<std::size_t>(std::ranges::find(arguments, NSString(u"-set")) - arguments.begin());
    if (option + 1 < arguments.size())
        return {false, firstSetNamed(arguments[option + 1], stored), argumentsFrom(arguments, option + 2)};
    return {false, selectedSets(selection, stored), argumentsFrom(arguments, 1)};
}

} // namespace kestrine
