#include "kestrinectl/inspect/DoctorCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/inspect/TrashPlace.h"
#include "kestrinectl/sets/PresetStore.h"
#include "kestrinectl/sets/SetNameRules.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/Words.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/process/SystemLibraries.h"

#include <algorithm>

namespace kestrine {

namespace {

void showLayers() {
    printLine("isolation of the decoders:");
    const std::vector<IsolationLayer> layers = isolationLayers();
    for (const IsolationLayer& layer : layers)
        printLine("  " + layer.name + ": " + (layer.isInForce ? "in force" : "missing") + " (" + layer.purpose
                  + ")");
    if (!std::ranges::all_of(layers, &IsolationLayer::isInForce))
        printLine(
            "  The kernel lacks the missing layers, or a container forbids them. Pictures are converted "
            "without them, unless --isolation strict is given.");
}

/// Which file the presets come from, and why it is this one.
void showPlaces() {
    const NSUserDefaults defaults = NSUserDefaults::standardUserDefaults();
    const auto used = defaults.fileOfDomain(presetsDomain);
    printLine("preferences:");
    if (!used)
        printLine("  no file yet; 'kestrinectl sets add NAME' creates " + PresetStore::path());
    for (const DomainFile& place : defaults.placesOfDomain(presetsDomain)) {
        const bool isUsed = used && place.path == used->path;
        printLine("  " + place.path + ": "
                  + (isUsed                   ? "used, because it is the first that exists"
                     : itemExists(place.path) ? "not used, because another file comes first"
                                              : "absent"));
    }
}

/// What is unusual about the names of the stored sets.
std::vector<std::string> findingsAbout(const ResizeSets& sets) {
    std::vector<std::string> findings;
    for (std::size_t i = 0; i < sets.size(); ++i) {
        const std::string name = sets[i]->name().value_or(u"").utf8();
        const std::string set = "@" + std::to_string(i + 1) + " " + quoted(name) + ": ";
        const auto first =
            std::ranges::find_if(sets, [&](const auto& other) { return other->name() == sets[i]->name(); });
        if (first - sets.begin() != static_cast<std::ptrdiff_t>(i))
            findings.push_back(
                set
                + "has the name of an earlier set, so that 'kestrine -set' cannot apply it; 'kestrinectl "
                  "sets edit --name' gives it another name");
        if (const auto objection = objectionTo(name))
            findings.push_back(set + *objection);
        for (const std::string& oddity : oddities(name))
            findings.push_back(set + oddity);
    }
    return findings;
}

/// Returns the problem; "" if the presets can be read.
std::string showPresets() {
    showPlaces();
    try {
        const PresetStore store = PresetStore::load();
        printLine("  " + counted(store.sets().size(), "set") + ", " + std::to_string(store.selection().size())
                  + " selected");
        for (const std::string& finding : findingsAbout(store.sets()))
            printLine("  " + finding);
        return "";
    } catch (const CommandError& broken) {
        printLine("  broken: kestrine takes them as absent");
        return broken.what();
    }
}

void showLibraries() {
    printLine("libraries:");
    const std::vector<SystemLibrary> missing = missingLibraries();
    if (missing.empty())
        printLine("  all there");
    for (const SystemLibrary& library : missing)
        printLine("  " + std::string(library.file) + " is missing, for " + library.purpose + "; 'apt install "
                  + library.package + "' installs it");
}

void diagnose(const std::string& folder) {
    showLayers();
    const std::string problem = showPresets();
    showLibraries();
    printLine("trash for " + folder + ":");
    if (!folderExists(folder))
        throw CommandError(folder + " is not a folder; name an existing one");
    printLine("  " + trashPlaceOf(folder));
    if (!problem.empty())
        throw CommandError(problem);
}

} // namespace

void addDoctorCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("doctor", "Show what works on this system: isolation, presets, libraries, "
                                         "trash; and what to do about the rest");
    auto folder = std::make_shared<std::string>(".");
    command
        ->add_option("FOLDER", *folder,
                     "Say where originals of this folder go when they are replaced (default: the "
                     "current folder)")
        ->check(nonEmpty());
    command->callback([folder] { diagnose(typedWord(*folder)); });
}

} // namespace kestrine
