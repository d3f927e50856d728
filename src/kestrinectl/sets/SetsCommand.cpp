#include "kestrinectl/sets/SetsCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/desktop/DesktopStatus.h"
#include "kestrinectl/sets/SetDescription.h"
#include "kestrinectl/sets/SetImport.h"
#include "kestrinectl/sets/SetJSON.h"
#include "kestrinectl/sets/SetNameRules.h"
#include "kestrinectl/sets/SetOptions.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/Words.h"

#include <algorithm>
#include <iostream>

namespace kestrine {

namespace {

constexpr const char* nameOrPosition = "The name of a set, or its position such as @2";

std::string ownNameOf(const ResizeSet& set) { return set.name().value_or(u"").utf8(); }

std::set<std::size_t> positionsOf(const PresetStore& store, const std::vector<std::string>& names) {
    std::set<std::size_t> positions;
    for (const std::string& name : names)
        positions.insert(store.positionOf(name));
    return positions;
}

std::set<std::size_t> allPositions(const PresetStore& store) {
    std::set<std::size_t> positions;
    for (std::size_t i = 0; i < store.sets().size(); ++i)
        positions.insert(i);
    return positions;
}

void printList(const PresetStore& store) {
    if (store.sets().empty())
        printError("no sets are stored; 'kestrinectl sets add NAME' adds one");
    for (std::size_t i = 0; i < store.sets().size(); ++i) {
        const ResizeSet& set = *store.sets()[i];
        printLine((store.selection().contains(i) ? "* @" : "  @") + std::to_string(i + 1) + "  "
                  + (set.name() ? ownNameOf(set) : "(no name)") + "  (" + summary(set) + ")");
    }
}

void addList(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("list", "List the sets; * marks the selected ones");
    auto namesOnly = std::make_shared<bool>(false), zeroBytes = std::make_shared<bool>(false);
    CLI::Option* names = command->add_flag("--names", *namesOnly, "Print only the names, one per line");
    command->add_flag("--null", *zeroBytes, "End each name with a zero byte instead of a newline")
        ->needs(names);
    command->callback([namesOnly, zeroBytes] {
        const PresetStore store = PresetStore::load();
        if (!*namesOnly)
            return printList(store);
        for (const auto& set : store.sets())
            *zeroBytes ? (void)(std::cout << ownNameOf(*set) << '\0') : printLine(ownNameOf(*set));
    });
}

void printSet(const PresetStore& store, std::size_t position) {
    const ResizeSet& set = *store.sets()[position];
    printLine(set.name() ? ownNameOf(set) : "(no name)");
    for (const std::string& warning : nameFindings(store.sets(), position))
        printLine("  Warning: " + warning + ".");
    for (const std::string& sentence : description(set))
        printLine("  " + sentence);
}

void addShow(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("show", "Describe in words what sets do");
    auto names = std::make_shared<std::vector<std::string>>();
    command->add_option("NAME", *names, nameOrPosition)->required();
    command->callback([names] {
        const PresetStore store = PresetStore::load();
        for (const std::string& name : *names)
            printSet(store, store.positionOf(name));
    });
}

/// A new name, checked.
struct NewName {
    std::optional<std::string> word;
    NameConflicts conflicts;

    /// Throws CommandError for a misleading name.
    void check() const {
        if (const auto objection = word ? objectionTo(typedWord(*word)) : std::nullopt)
            throw CommandError(*objection + "; choose another name");
    }
};

/// After a change: stores it and prints notices and warnings.
void saveAndTell(PresetStore& store, const SetPlacement& placement, const ResizeSet& changed, bool isNamed) {
    store.save();
    for (const std::string& notice : placement.notices())
        printLine(notice);
    if (isNamed)
        for (const std::string& oddity : oddities(ownNameOf(changed)))
            printWarning(oddity);
    remindOfDesktopActions(store.sets());
}

void setName(ResizeSet& set, const NewName& name) {
    if (name.word)
        set.setValueForKey(NSString::fromUTF8(typedWord(*name.word)).object(), u"name");
}

void addAdd(CLI::App& sets) {
    CLI::App* command =
        sets.add_subcommand("add", "Make a new set; options not given have their default values");
    auto options = std::make_shared<SetOptions>();
    auto name = std::make_shared<NewName>();
    command->add_option("NAME", name->word, "The name of the new set")->required();
    name->conflicts.addTo(*command);
    options->addTo(*command, true);
    command->callback([options, name] {
        name->check();
        PresetStore store = PresetStore::loadForChange();
        SetPlacement placement(store, name->conflicts);
        const auto set = std::make_shared<ResizeSet>();
        setName(*set, *name);
        options->applyTo(*set);
        placement.add(set);
        saveAndTell(store, placement, *set, true);
    });
}

void addEdit(CLI::App& sets) {
    CLI::App* command =
        sets.add_subcommand("edit", "Change a set; options not given keep their current values");
    auto options = std::make_shared<SetOptions>();
    auto newName = std::make_shared<NewName>();
    auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, nameOrPosition)->required();
    command->add_option("--name", newName->word, "The new name of the set")->option_text("NAME");
    newName->conflicts.addTo(*command);
    options->addTo(*command, false);
    command->callback([options, newName, name] {
        newName->check();
        PresetStore store = PresetStore::loadForChange();
        SetPlacement placement(store, newName->conflicts);
        const std::size_t position = store.positionOf(*name);
        const auto set = std::make_shared<ResizeSet>(*store.sets()[position]);
        setName(*set, *newName);
        options->applyTo(*set);
        placement.change(position, set);
        saveAndTell(store, placement, *set, newName->word.has_value());
    });
}

void addRemove(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("remove", "Remove sets");
    auto names = std::make_shared<std::vector<std::string>>();
    command->add_option("NAME", *names, nameOrPosition)->required();
    command->callback([names] {
        PresetStore store = PresetStore::loadForChange();
        store.remove(positionsOf(store, *names));
        store.save();
        remindOfDesktopActions(store.sets());
    });
}

void addSelect(CLI::App& sets) {
    CLI::App* command =
        sets.add_subcommand("select", "Choose the sets that are applied when no set is named");
    auto names = std::make_shared<std::vector<std::string>>();
    auto all = std::make_shared<bool>(false), none = std::make_shared<bool>(false);
    CLI::Option* named = command->add_option("NAME", *names, nameOrPosition);
    CLI::Option* every = command->add_flag("--all", *all, "Select every set");
    CLI::Option* no = command->add_flag("--none", *none, "Select no set");
    named->excludes(every)->excludes(no);
    every->excludes(no);
    command->callback([names, all, none] {
        if (names->empty() && !*all && !*none)
            throw CLI::RequiredError("NAME, --all or --none");
        PresetStore store = PresetStore::loadForChange();
        store.select(*all ? allPositions(store) : positionsOf(store, *names));
        store.save();
    });
}

void addExport(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("export", "Write sets as JSON to standard output");
    auto names = std::make_shared<std::vector<std::string>>();
    command->add_option("NAME", *names, std::string(nameOrPosition) + " (default: all sets)");
    command->callback([names] {
        using nlohmann::ordered_json;
        const PresetStore store = PresetStore::load();
        ordered_json list = ordered_json::array();
        for (const std::size_t position : names->empty() ? allPositions(store) : positionsOf(store, *names))
            list.push_back(toJSON(*store.sets()[position]));
        std::cout << ordered_json{{"sets", list}}.dump(2) << "\n";
    });
}

void addImport(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("import", "Add sets from a JSON export");
    auto request = std::make_shared<SetImport>();
    request->addTo(*command);
    command->callback([request] { request->run(); });
}

void addWhere(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("where", "Print the path of the preferences file");
    command->callback([] { printLine(PresetStore::path()); });
}

} // namespace

void addSetsCommand(CLI::App& program) {
    CLI::App* sets = program.add_subcommand("sets", "List, show, make and change presets");
    sets->require_subcommand(1);
    for (const auto add :
         {addList, addShow, addAdd, addEdit, addRemove, addSelect, addExport, addImport, addWhere})
        add(*sets);
}

} // namespace kestrine
