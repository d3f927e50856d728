#include "kestrinectl/sets/SetImport.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/OpenedInput.h"
#include "kestrinectl/desktop/DesktopStatus.h"
#include "kestrinectl/sets/SetJSON.h"
#include "kestrinectl/sets/SetNameRules.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/ShownPath.h"
#include "kestrinectl/text/Words.h"
#include "platform/foundation/propertylist/PropertyListBounds.h"

namespace kestrine {

namespace {

using nlohmann::json;

constexpr std::uint64_t maxExport = maxPropertyListSize; // the preferences file cannot hold more sets

/// How messages name the export.
std::string shownSource(const std::string& path) {
    return path == "-" ? nameOfStandardInput : shownPath(path);
}

/// The list of sets in an export, or a list that stands alone.
json listIn(const std::string& text, const std::string& path) {
    constexpr int maxDepth = 8; // an export has four levels
    const auto checkDepth = [&path](int depth, json::parse_event_t, json&) {
        if (depth > maxDepth)
            throw CommandError(shownSource(path) + " is not a JSON export of sets: it is nested too deeply");
        return true;
    };
    json document = json::parse(text, checkDepth, false);
    json list = document.is_object() && document.contains("sets") ? document["sets"] : document;
    if (!list.is_array())
        throw CommandError(shownSource(path) + " is not a JSON export of sets");
    return list;
}

void checkName(const ResizeSet& set, const std::string& where) {
    if (const auto objection = objectionTo(set.name().value_or(u"").utf8()))
        throw CommandError(where + *objection + "; --any-name accepts it");
}

} // namespace

void SetImport::addTo(CLI::App& command) {
    command.add_option("FILE", path, "The export; - for standard input")->required()->check(nonEmpty());
    conflicts.addTo(command);
    command.add_flag("--any-name", acceptsAnyName,
                     "Accept names that lead to another folder, look like a position or occur twice in FILE");
}

void SetImport::run() const {
    const std::string file = typedWord(path);
    PresetStore store = PresetStore::loadForChange();
    SetPlacement placement(store, conflicts, acceptsAnyName);
    std::vector<std::string> warnings;
    std::size_t number = 0;
    for (const json& element : listIn(contentOfInput("export", file, maxExport), file)) {
        const std::string where = shownSource(file) + ": set " + std::to_string(++number);
        const std::shared_ptr<ResizeSet> set = setFromJSON(element, where);
        if (!acceptsAnyName)
            checkName(*set, where + ": ");
        placement.add(set, where + ": ");
        for (const std::string& oddity : oddities(set->name().value_or(u"").utf8()))
            warnings.push_back(where + ": " + oddity);
    }
    store.save();
    for (const std::string& notice : placement.notices())
        printLine(notice);
    for (const std::string& warning : warnings)
        printWarning(warning);
    remindOfDesktopActions(store.sets());
}

} // namespace kestrine
