#include "kestrinectl/SetsCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/PresetStore.h"
#include "kestrinectl/SetDescription.h"
#include "kestrinectl/SetJSON.h"
#include "kestrinectl/SetOptions.h"
#include "kestrinectl/Words.h"

#include <fstream>
#include <iostream>
#include <iterator>

namespace kestrine {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

std::string nameOf(const ResizeSet& set) { return set.name() ? set.name()->utf8() : "(no name)"; }

/// A file's content, or standard input's for "-".
std::string contentOf(const std::string& path) {
    if (path == "-")
        return {std::istreambuf_iterator<char>(std::cin), {}};
    std::ifstream file(path, std::ios::binary);
    if (!file)
        throw CommandError("cannot read " + path);
    return {std::istreambuf_iterator<char>(file), {}};
}

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

void addList(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("list", "List the sets; * marks those that are selected");
    command->callback([] {
        const PresetStore store = PresetStore::load();
        for (std::size_t i = 0; i < store.sets().size(); ++i)
            std::cout << (store.selection().contains(i) ? "* " : "  ") << "@" << i + 1 << "  "
                      << nameOf(*store.sets()[i]) << "  (" << summary(*store.sets()[i]) << ")\n";
    });
}

void addShow(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("show", "Say in words what sets do");
    auto names = std::make_shared<std::vector<std::string>>();
    command->add_option("NAME", *names, "A set's name, or its position such as @2")->required();
    command->callback([names] {
        const PresetStore store = PresetStore::load();
        for (const std::string& name : *names) {
            const ResizeSet& set = *store.sets()[store.positionOf(name)];
            std::cout << nameOf(set) << "\n";
            for (const std::string& sentence : description(set))
                std::cout << "  " << sentence << "\n";
        }
    });
}

void addAdd(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("add", "Make a new set; what is not said keeps its default");
    auto options = std::make_shared<SetOptions>();
    command->add_option("NAME", options->name, "The new set's name")->required();
    options->addTo(*command);
    command->callback([options] {
        PresetStore store = PresetStore::loadForChange();
        const auto set = std::make_shared<ResizeSet>();
        options->applyTo(*set);
        store.append(set);
        store.save();
    });
}

void addEdit(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("edit", "Change a set; what is not said stays");
    auto options = std::make_shared<SetOptions>();
    auto name = std::make_shared<std::string>();
    command->add_option("NAME", *name, "A set's name, or its position such as @2")->required();
    command->add_option("--name", options->name, "Its new name");
    options->addTo(*command);
    command->callback([options, name] {
        PresetStore store = PresetStore::loadForChange();
        const std::size_t position = store.positionOf(*name);
        const auto set = std::make_shared<ResizeSet>(*store.sets()[position]);
        options->applyTo(*set);
        store.replace(position, set);
        store.save();
    });
}

void addRemove(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("remove", "Remove sets");
    auto names = std::make_shared<std::vector<std::string>>();
    command->add_option("NAME", *names, "A set's name, or its position such as @2")->required();
    command->callback([names] {
        PresetStore store = PresetStore::loadForChange();
        store.remove(positionsOf(store, *names));
        store.save();
    });
}

void addSelect(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("select", "Choose the sets that apply when none is named");
    auto names = std::make_shared<std::vector<std::string>>();
    auto all = std::make_shared<bool>(false), none = std::make_shared<bool>(false);
    CLI::Option* named = command->add_option("NAME", *names, "A set's name, or its position such as @2");
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
    command->add_option("NAME", *names,
                        "A set's name, or its position such as @2; all sets when none is given");
    command->callback([names] {
        const PresetStore store = PresetStore::load();
        ordered_json list = ordered_json::array();
        for (const std::size_t position : names->empty() ? allPositions(store) : positionsOf(store, *names))
            list.push_back(toJSON(*store.sets()[position]));
        std::cout << ordered_json{{"sets", list}}.dump(2) << "\n";
    });
}

/// The sets of an export, or of a bare list of sets.
std::vector<std::shared_ptr<const ResizeSet>> setsIn(const std::string& text, const std::string& path) {
    constexpr int deepest = 8; // an export has four levels
    const auto checkDepth = [&path](int depth, json::parse_event_t, json&) {
        if (depth > deepest)
            throw CommandError(path + " is no JSON export of sets: it is nested too deeply");
        return true;
    };
    const json document = json::parse(text, checkDepth, false);
    const bool isExport = document.is_object() && document.contains("sets");
    const json& list = isExport ? document["sets"] : document;
    if (!list.is_array())
        throw CommandError(path + " is no JSON export of sets");
    std::vector<std::shared_ptr<const ResizeSet>> sets;
    for (std::size_t i = 0; i < list.size(); ++i)
        sets.push_back(setFromJSON(list[i], path + ": set " + std::to_string(i + 1)));
    return sets;
}

void addImport(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("import", "Add sets from a JSON export");
    auto path = std::make_shared<std::string>();
    auto replaces = std::make_shared<bool>(false);
    command->add_option("FILE", *path, "The export; - for standard input")->required();
    command->add_flag("--replace", *replaces, "Let a set take the place of one that has its name");
    command->callback([path, replaces] {
        PresetStore store = PresetStore::loadForChange();
        const std::string typed = typedWord(*path);
        for (const auto& set : setsIn(contentOf(typed), typed)) {
            const auto same = std::ranges::find_if(
                store.sets(), [&](const auto& other) { return other->name() == set->name(); });
            if (*replaces && same != store.sets().end())
                store.replace(static_cast<std::size_t>(same - store.sets().begin()), set);
            else
                store.append(set);
        }
        store.save();
    });
}

void addWhere(CLI::App& sets) {
    CLI::App* command = sets.add_subcommand("where", "Print the path of the preferences file");
    command->callback([] { std::cout << PresetStore::path() << "\n"; });
}

} // namespace

void addSetsCommand(CLI::App& program) {
    CLI::App* sets = program.add_subcommand("sets", "Look at presets, make and change them");
    sets->require_subcommand(1);
    for (const auto add :
         {addList, addShow, addAdd, addEdit, addRemove, addSelect, addExport, addImport, addWhere})
        add(*sets);
}

} // namespace kestrine
