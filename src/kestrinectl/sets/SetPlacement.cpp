#include "kestrinectl/sets/SetPlacement.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/text/Messages.h"

#include <algorithm>

namespace kestrine {

namespace {

std::string quotedName(const ResizeSet& set) { return quoted(set.name().value_or(u"").utf8()); }

CommandError nameExists(const std::string& where, const ResizeSet& set) {
    return CommandError(where + "a set named " + quotedName(set)
                        + " exists already; --overwrite replaces it, --rename chooses a free name");
}

CommandError nameOccursTwice(const std::string& where, const ResizeSet& set) {
    return CommandError(where + "an earlier set has the name " + quotedName(set)
                        + " too; --rename chooses a free name, --any-name accepts it");
}

} // namespace

void NameConflicts::addTo(CLI::App& command) {
    CLI::Option* overwrites = command.add_flag(
        "--overwrite", overwrite,
        "Replace the first set that has the name already, in its position (default: refuse the name)");
    command
        .add_flag("--rename", rename, "Choose a free name, such as \"Web 2\", when the name exists already")
        ->excludes(overwrites);
}

void SetPlacement::add(const std::shared_ptr<ResizeSet>& set, const std::string& where) {
    const std::vector<std::size_t> same = positionsNamed(set->name());
    if (same.empty())
        return append(set);
    if (conflicts_.rename) {
        notices_.push_back(where + "added as " + giveFreeName(*set));
        return append(set);
    }
    const auto earlier = std::ranges::find_if(same, [this](std::size_t at) { return !added_.contains(at); });
    if (earlier == same.end() && !acceptsEqualNames_)
        throw nameOccursTwice(where, *set);
    if (earlier == same.end())
        return append(set);
    if (!conflicts_.overwrite)
        throw nameExists(where, *set);
    store_.replace(*earlier, set);
    added_.insert(*earlier);
}

void SetPlacement::change(std::size_t position, const std::shared_ptr<ResizeSet>& set) {
    const std::vector<std::size_t> same = positionsNamed(set->name());
    const bool isFree = same.empty() || store_.sets()[position]->name() == set->name();
    if (isFree)
        return store_.replace(position, set);
    if (conflicts_.rename) {
        notices_.push_back("renamed to " + giveFreeName(*set));
        return store_.replace(position, set);
    }
    if (!conflicts_.overwrite)
        throw nameExists("", *set);
    store_.replace(same.front(), set);
    store_.remove({position});
}

std::vector<std::size_t> SetPlacement::positionsNamed(const OptionalString& name) const {
    std::vector<std::size_t> positions;
    for (std::size_t i = 0; i < store_.sets().size(); ++i)
        if (store_.sets()[i]->name() == name)
            positions.push_back(i);
    return positions;
}

/// The name, in quotation marks.
std::string SetPlacement::giveFreeName(ResizeSet& set) const {
    const NSString wanted = set.name().value_or(u"");
    NSString name = wanted;
    for (std::size_t n = 2; !positionsNamed(name).empty(); ++n)
        name = wanted + u" " + NSString::fromUTF8(std::to_string(n));
    set.setValueForKey(name.object(), u"name");
    return quoted(name.utf8());
}

void SetPlacement::append(const std::shared_ptr<const ResizeSet>& set) {
    added_.insert(store_.sets().size());
    store_.append(set);
}

} // namespace kestrine
