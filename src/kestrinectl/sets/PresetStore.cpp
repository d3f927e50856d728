#include "kestrinectl/sets/PresetStore.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/sets/SetNameRules.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/Words.h"
#include "platform/foundation/text/Decomposition.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

namespace kestrine {

namespace {

[[noreturn]] void unreadable(const std::string& path, const Failure& failure) {
    throw CommandError("the presets in " + path + " cannot be read (" + failure.text
                       + "); repair the file or move it away");
}

} // namespace

PresetStore PresetStore::loadForChange() {
    const auto places = NSUserDefaults::standardUserDefaults().placesOfDomain(presetsDomain);
    const std::string folder = places.empty() ? "" : folderOf(places.front().path);
    const Result<void> made = makePrivateFolders(folder);
    Result<FolderLock> lock = made ? FolderLock::take(folder) : made.failure();
    if (!lock)
        throw CommandError("the presets cannot be changed: " + lock.failure().text);
    PresetStore store = load();
    store.lock_ = std::move(*lock);
    return store;
}

PresetStore PresetStore::load() {
    NSUserDefaults defaults = NSUserDefaults::standardUserDefaults();
    Result<PropertyList> domain = defaults.persistentDomainForName(presetsDomain);
    const bool isMissing = !domain && domain.failure().reason == Reason::notFound;
    PresetStore store(std::move(defaults), PropertyList::empty());
    if (isMissing)
        return store;
    if (!domain)
        unreadable(store.path(), domain.failure());
    store.domain_ = std::move(*domain);
    const Result<ResizeSets> sets = storedSets(store.domain_);
    if (!sets)
        unreadable(store.path(), sets.failure());
    store.sets_ = *sets;
    const auto selection = storedSelection(store.domain_);
    if (!selection)
        unreadable(store.path(), selection.failure());
    for (std::size_t i = (*selection)->firstIndex(); i < store.sets_.size();
         i = (*selection)->indexGreaterThanIndex(i))
        store.selection_.insert(i);
    return store;
}

PresetStore PresetStore::loadOrWarn() {
    try {
        return load();
    } catch (const CommandError& unreadable) {
        printError(std::string(unreadable.what()) + "; this run uses no presets");
        return {NSUserDefaults::standardUserDefaults(), PropertyList::empty()};
    }
}

std::string PresetStore::path() {
    const NSUserDefaults defaults = NSUserDefaults::standardUserDefaults();
    if (const auto file = defaults.fileOfDomain(presetsDomain))
        return file->path;
    const auto places = defaults.placesOfDomain(presetsDomain);
    return places.empty() ? "" : places.front().path;
}

std::vector<std::size_t> PresetStore::positionsNamed(const std::string& name) const {
    const NSString wanted = NSString::fromUTF8(name);
    const auto positionsWhere = [&](const auto& suits) {
        std::vector<std::size_t> found;
        for (std::size_t i = 0; i < sets_.size(); ++i)
            if (const OptionalString own = sets_[i]->name(); own && suits(*own))
                found.push_back(i);
        return found;
    };
    const auto equal = positionsWhere([&](const NSString& own) { return own == wanted; });
    return !equal.empty() ? equal : positionsWhere([&](const NSString& own) {
        return areCanonicallyEquivalent(own.utf16(), wanted.utf16());
    });
}

std::size_t PresetStore::positionNamed(const std::string& name) const {
    const std::vector<std::size_t> found = positionsNamed(name);
    if (found.empty())
        throw CommandError("no set named " + quoted(name) + "; 'kestrinectl sets list' lists all sets");
    if (found.size() > 1)
        throw CommandError(std::to_string(found.size()) + " sets are named " + quoted(name)
                           + "; choose one by its position, such as @" + std::to_string(found.front() + 1));
    return found.front();
}

std::size_t PresetStore::positionOf(const std::string& word) const {
    const std::string text = typedWord(word);
    const std::optional<std::size_t> position = positionIn(text);
    if (position && *position <= sets_.size() && positionsNamed(text).empty())
        return *position - 1;
    return positionNamed(text);
}

void PresetStore::remove(const std::set<std::size_t>& positions) {
    ResizeSets kept;
    std::set<std::size_t> selection;
    for (std::size_t i = 0; i < sets_.size(); ++i) {
        if (positions.contains(i))
            continue;
        if (selection_.contains(i))
            selection.insert(kept.size());
        kept.push_back(sets_[i]);
    }
    sets_ = std::move(kept);
    selection_ = std::move(selection);
}

void PresetStore::save() {
    std::vector<NSRange> ranges;
    for (const std::size_t position : selection_)
        ranges.push_back({position, 1});
    const auto sets = archivedSets(sets_);
    const auto selection = archivedSelection(NSIndexSet(std::move(ranges)));
    if (!sets || !selection)
        throw CommandError("the sets cannot be archived: " + (sets ? selection : sets).failure().text);
    domain_.setData(resizeSetsKey, (*sets)->bytes());
    domain_.setData(selectionIndexesKey, (*selection)->bytes());
    const Result<void> written = defaults_.setPersistentDomain(domain_, presetsDomain);
    if (!written)
        throw CommandError("the presets cannot be stored: " + written.failure().text);
}

} // namespace kestrine
