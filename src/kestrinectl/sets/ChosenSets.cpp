#include "kestrinectl/sets/ChosenSets.h"

#include "kestrinectl/CommandError.h"

namespace kestrine {

ResizeSets chosenSets(const PresetStore& store, const std::vector<std::string>& names,
                      bool optionsDescribeResult, const std::string& example) {
    ResizeSets sets;
    for (const std::string& name : names)
        sets.push_back(store.sets()[store.positionOf(name)]);
    if (!sets.empty() || optionsDescribeResult)
        return sets;
    for (const std::size_t position : store.selection())
        sets.push_back(store.sets()[position]);
    if (sets.empty())
        throw CommandError(
            "no set is selected; name one with --set, or describe the result, such as with " + example, 2);
    return sets;
}

} // namespace kestrine
