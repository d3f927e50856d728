#include "kestrinectl/inspect/Diagnosis.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/sets/PresetStore.h"
#include "kestrinectl/sets/SetNameRules.h"
#include "kestrinectl/text/JSONText.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/ShownPath.h"
#include "kestrinectl/text/Words.h"
#include "platform/host/files/FileStatus.h"

#include <algorithm>

namespace kestrine {

namespace {

using nlohmann::ordered_json;

std::vector<PresetsPlace> presetsPlaces() {
    const NSUserDefaults defaults = NSUserDefaults::standardUserDefaults();
    const auto used = defaults.fileOfDomain(presetsDomain);
    std::vector<PresetsPlace> places;
    for (const DomainFile& place : defaults.placesOfDomain(presetsDomain))
        places.push_back({place.path, itemExists(place.path), used && place.path == used->path});
    return places;
}

std::vector<SetFinding> findingsAbout(const ResizeSets& sets) {
    std::vector<SetFinding> findings;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const std::string name = sets[i]->name().value_or(u"").utf8();
        for (const std::string& text : nameFindings(sets, i))
            findings.push_back({i + 1, name, text});
    }
    return findings;
}

void readPresets(Diagnosis& system) {
    system.places = presetsPlaces();
    try {
        const PresetStore store = PresetStore::load();
        system.sets = store.sets().size();
        system.selected = store.selection().size();
        system.findings = findingsAbout(store.sets());
    } catch (const CommandError& broken) {
        system.presetsProblem = broken.what();
    }
}

void addLayers(const Diagnosis& system, std::vector<std::string>& lines) {
    lines.emplace_back("isolation of the decoders:");
    for (const IsolationLayer& layer : system.layers)
        lines.push_back("  " + layer.name + ": " + (layer.isInForce ? "in force" : "missing") + " ("
                        + layer.purpose + ")");
    if (!std::ranges::all_of(system.layers, &IsolationLayer::isInForce))
        lines.emplace_back("  The kernel does not support the missing layers, or a container forbids them. "
                           "Pictures are converted without them, unless --isolation strict is given.");
}

void addPresets(const Diagnosis& system, std::vector<std::string>& lines) {
    lines.emplace_back("preferences:");
    if (std::ranges::none_of(system.places, &PresetsPlace::isUsed))
        lines.push_back("  no file yet; 'kestrinectl sets add NAME' creates "
                        + shownPath(PresetStore::path()));
    for (const PresetsPlace& place : system.places)
        lines.push_back("  " + shownPath(place.path) + ": "
                        + (place.isUsed    ? "used, because it is the first that exists"
                           : place.isThere ? "not used, because another file comes first"
                                           : "absent"));
    if (!system.presetsProblem.empty()) {
        lines.emplace_back("  broken: kestrine ignores them");
        return;
    }
    lines.push_back("  " + counted(system.sets, "set") + ", " + std::to_string(system.selected)
                    + " selected");
    for (const SetFinding& finding : system.findings)
        lines.push_back("  @" + std::to_string(finding.position) + " " + quoted(finding.set) + ": "
                        + finding.text);
}

void addLibraries(const Diagnosis& system, std::vector<std::string>& lines) {
    lines.emplace_back("libraries:");
    if (system.missing.empty())
        lines.emplace_back("  none is missing");
    for (const SystemLibrary& library : system.missing)
        lines.push_back("  " + std::string(library.file) + " is missing, for " + library.purpose
                        + "; 'apt install " + library.package + "' installs it");
}

ordered_json listOf(const auto& items, const auto& toItem) {
    ordered_json list = ordered_json::array();
    for (const auto& item : items)
        list.push_back(toItem(item));
    return list;
}

ordered_json toJSON(const IsolationLayer& layer) {
    return {{"layer", layer.name}, {"inForce", layer.isInForce}, {"purpose", layer.purpose}};
}

ordered_json toJSON(const PresetsPlace& place) {
    return {{"path", textToJSON(place.path)}, {"exists", place.isThere}, {"used", place.isUsed}};
}

ordered_json toJSON(const SetFinding& finding) {
    return {{"position", finding.position}, {"set", textToJSON(finding.set)}, {"finding", finding.text}};
}

ordered_json toJSON(const SystemLibrary& library) {
    return {{"file", library.file}, {"purpose", library.purpose}, {"package", library.package}};
}

} // namespace

Diagnosis diagnose(const std::string& folder) {
    if (!folderExists(folder))
        throw CommandError(shownPath(folder) + " is not a folder; name an existing one");
    Diagnosis system{
        .layers = isolationLayers(),
        .missing = missingLibraries(),
        .folder = folder,
        .trash = trashPlaceOf(folder),
    };
    readPresets(system);
    return system;
}

std::vector<std::string> linesOf(const Diagnosis& system) {
    std::vector<std::string> lines;
    addLayers(system, lines);
    addPresets(system, lines);
    addLibraries(system, lines);
    lines.push_back("trash for " + shownPath(system.folder) + ":");
    lines.push_back("  " + system.trash.text);
    return lines;
}

ordered_json toJSON(const Diagnosis& system) {
    const auto item = [](const auto& part) { return toJSON(part); };
    const bool isBroken = !system.presetsProblem.empty();
    return {{"isolation", listOf(system.layers, item)},
            {"preferences",
             {{"files", listOf(system.places, item)},
              {"sets", system.sets},
              {"selected", system.selected},
              {"findings", listOf(system.findings, item)},
              {"problem", isBroken ? textToJSON(system.presetsProblem) : ordered_json()}}},
            {"missingLibraries", listOf(system.missing, item)},
            {"trash",
             {{"folder", textToJSON(system.folder)},
              {"possible", system.trash.isPossible},
              {"text", textToJSON(system.trash.text)}}}};
}

} // namespace kestrine
