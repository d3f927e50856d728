#include "kestrinectl/shards/PlannedTreatment.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/convert/ConvertRecipes.h"
#include "kestrinectl/sets/SetJSON.h"
#include "kestrinectl/text/JSONText.h"
#include "kestrinectl/text/Words.h"

#include <algorithm>

namespace kestrine {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr const char* choiceOfSets = "--set";

/// A parser of the options and nothing else.
void addOptions(CLI::App& parser, ConvertTreatment& treatment) {
    parser.set_help_flag();
    treatment.addTo(parser);
    treatment.addLimitsTo(parser);
    parser.remove_option(parser.get_option(choiceOfSets));
}

ConvertTreatment treatmentOf(std::vector<std::string> words) {
    ConvertTreatment treatment;
    CLI::App parser;
    addOptions(parser, treatment);
    std::ranges::reverse(words); // as the parser expects them
    parser.parse(std::move(words));
    return treatment;
}

PlannedTreatment treatmentOf(const json& object) {
    ResizeSets sets;
    for (const json& set : object.at("sets"))
        sets.push_back(setFromJSON(set, "a set of the plan"));
    std::vector<std::string> words;
    for (const json& word : object.at("options"))
        words.push_back(textIn(word));
    PlannedTreatment planned{.treatment = treatmentOf(std::move(words)), .recipes = {}};
    planned.recipes = recipesFor(planned.treatment.options, sets);
    if (replacesFiles(planned.recipes))
        throw CommandError("replacing files cannot be planned");
    return planned;
}

} // namespace

std::string treatmentAsText(const CLI::App& command, const ResizeSets& sets) {
    ordered_json object = {{"sets", ordered_json::array()}, {"options", ordered_json::array()}};
    for (const auto& set : sets)
        object["sets"].push_back(toJSON(*set));
    ConvertTreatment known;
    CLI::App parser;
    addOptions(parser, known);
    for (const CLI::Option* option : parser.get_options()) {
        const std::string name = "--" + option->get_lnames().front();
        const CLI::Option* given = command.get_option(name);
        if (given->count() > 0)
            object["options"].push_back(textToJSON(name + "=" + typedWord(given->results().back())));
    }
    return object.dump();
}

PlannedTreatment treatmentFromText(const std::string& text, const std::string& plan) {
    try {
        return treatmentOf(json::parse(text));
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        throw CommandError("the plan " + plan
                           + " has options that this version of kestrinectl does not "
                             "understand: "
                           + error.what());
    }
}

} // namespace kestrine
