#include "kestrinectl/inspect/ExplainCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/inspect/Explanation.h"
#include "kestrinectl/sets/PresetStore.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/Words.h"

#include <iostream>

namespace kestrine {

namespace {

struct ExplainRequest {
    std::vector<std::string> files, sets;
    bool isJSON = false;
};

ResizeSets setsOf(const ExplainRequest& request) {
    const PresetStore store = PresetStore::load();
    ResizeSets sets;
    for (const std::string& name : request.sets)
        sets.push_back(store.sets()[store.positionOf(name)]);
    return request.sets.empty() ? store.sets() : sets;
}

void print(const Explanation& explanation, bool asJSON) {
    if (asJSON)
        std::cout << toJSON(explanation).dump() << "\n";
    else
        for (const std::string& line : linesOf(explanation))
            printLine(line);
}

void explainAll(const ExplainRequest& request) {
    const ResizeSets sets = setsOf(request);
    const DecoderIsolation isolation(IsolationChoice::automatic, 1);
    std::string failures;
    for (const std::string& word : request.files)
        try {
            print(explain(typedWord(word), sets), request.isJSON);
        } catch (const CommandError& error) {
            failures += (failures.empty() ? "" : "; ") + std::string(error.what());
        }
    if (!failures.empty())
        throw CommandError(failures);
}

} // namespace

void addExplainCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("explain", "Show what pictures are, and what sets would make of them and why");
    auto request = std::make_shared<ExplainRequest>();
    command->add_option("FILE", request->files, "Pictures; only their headers are read")->required();
    command->add_option("--set", request->sets, "A set to explain; may be repeated (default: all sets)")
        ->allow_extra_args(false)
        ->option_text("NAME");
    command->add_flag("--json", request->isJSON, "Print one JSON object per file");
    command->callback([request] { explainAll(*request); });
}

} // namespace kestrine
