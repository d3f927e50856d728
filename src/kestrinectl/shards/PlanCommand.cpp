#include "kestrinectl/shards/PlanCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/StoppedBySignal.h"
#include "kestrinectl/convert/ConvertJobs.h"
#include "kestrinectl/convert/ConvertLines.h"
#include "kestrinectl/convert/ConvertRecipes.h"
#include "kestrinectl/convert/ConvertResources.h"
#include "kestrinectl/convert/ConvertSelection.h"
#include "kestrinectl/convert/InputBatches.h"
#include "kestrinectl/convert/OptionGroups.h"
#include "kestrinectl/convert/PlannedNames.h"
#include "kestrinectl/shards/NameGroups.h"
#include "kestrinectl/shards/Plan.h"
#include "kestrinectl/shards/PlannedTreatment.h"
#include "kestrinectl/shards/RootFolder.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/ShownPath.h"
#include "kestrinectl/text/Words.h"
#include "platform/host/process/StandardOutput.h"
#include "platform/host/process/StopSignals.h"
#include "platform/host/process/Terminal.h"
#include "platform/imageio/PictureEngine.h"

#include <algorithm>
#include <filesystem>

namespace kestrine {

namespace {

struct PlanRequest {
    ConvertTreatment treatment;
    ConvertSelection selection;
    ConvertResources resources;
    std::string root = ".";
    bool isQuiet = false;
};

std::string belowRoot(const RootFolder& root, const std::string& path) {
    if (const auto relative = root.relative(path))
        return *relative;
    throw CommandError(shownPath(path) + " lies outside the root " + root.absolute("")
                           + "; give a folder that holds all files and results with --root",
                       2);
}

/// The files of a plan, and how many could not be planned.
struct Planned {
    std::vector<PlanRecord> records;
    std::size_t failures = 0;
};

PlanRecord recordOf(const RootFolder& root, const std::string& source, const FileMark& mark,
                    const PlannedNames& names) {
    PlanRecord record{
        .source = belowRoot(root, source), .bytes = mark.bytes, .modified = mark.modified, .results = {}};
    for (const std::string& result : names.paths)
        record.results.push_back(result.empty() ? "" : belowRoot(root, result));
    return record;
}

/// Why a file cannot be planned; nullopt if it can. A picture is opened here only if opening it for the names
/// of its results gave none.
std::optional<std::string> reasonAgainst(const ConvertInput& input, const Result<FileMark>& mark,
                                         const PlannedNames& names) {
    if (!mark)
        return withoutPath(mark.failure().text, input.path);
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(input.path, ignored))
        return "is not a regular file";
    if (!names.complaints.empty())
        return names.complaints.front().text;
    if (std::ranges::all_of(names.paths, &std::string::empty))
        if (const auto opened = openPicture(input.path); !opened)
            return withoutPath(opened.failure().text, input.path);
    return std::nullopt;
}

/// Adds a batch to a plan.
void addRecords(Planned& planned, const RootFolder& root, NamePlanner& planner,
                const std::vector<NumberedInput>& inputs, const std::vector<ResizeJob>& jobs) {
    const std::vector<PlannedNames> names = planner.plan(jobs);
    for (std::size_t i = 0; i < inputs.size(); ++i) {
        const ConvertInput& input = inputs[i].input;
        const Result<FileMark> mark = markOfFile(input.path);
        if (const auto reason = reasonAgainst(input, mark, names[i])) {
            printError(input.shown + ": " + *reason);
            ++planned.failures;
        } else {
            planned.records.push_back(recordOf(root, input.path, *mark, names[i]));
        }
    }
}

/// Searches for files and plans them.
Planned plannedFiles(const PlanRequest& request, const ConversionRecipes& recipes, const RootFolder& root) {
    const ConvertSelection& selection = request.selection;
    const std::size_t count = countForNames(selection, recipes);
    const DecoderIsolation isolation = request.resources.isolate(request.resources.jobs);
    NamePlanner planner(Openings::ifNeeded, request.resources.jobs);
    Planned planned;
    InputBatches batches(
        {.pictures =
             [&](const std::vector<NumberedInput>& inputs) {
                 std::vector<ResizeJob> jobs;
                 for (const auto& [input, position, number] : inputs)
                     jobs.push_back(jobFor(input, recipes, request.treatment.policy(), number, count));
                 addRecords(planned, root, planner, inputs, jobs);
             },
         .finding =
             [&](std::size_t, const ConvertResult& finding) {
                 printResult(finding, request.isQuiet ? ConvertDetail::none : ConvertDetail::lines);
                 planned.failures += finding.status == ConvertStatus::failed ? 1 : 0;
             }});
    findInputs(selection.files, selection.search, batches);
    batches.end();
    throwIfStopped();
    return planned;
}

void addGroups(std::vector<PlanRecord>& records) {
    NameGroups groups;
    for (const PlanRecord& record : records)
        groups.add(record.source, record.results);
    for (std::size_t i = 0; i < records.size(); ++i)
        records[i].group = groups.groupOf(i);
    if (groups.hasSimilarNames())
        printWarning("some results have names that differ only in upper and lower case or in accents; a file "
                     "system that does not tell them apart keeps the first of each");
}

void write(const PlanHeader& header, const std::vector<PlanRecord>& records) {
    StandardOutput output;
    output.write(textOf(header));
    constexpr std::size_t piece = 1 << 16;
    std::string text;
    for (const PlanRecord& record : records) {
        text += textOf(record);
        if (text.size() >= piece)
            output.write(std::exchange(text, ""));
    }
    output.write(text + endOfPlan(records.size()));
    if (output.failed())
        throw CommandError("the plan could not be written");
}

std::size_t resultsIn(const std::vector<PlanRecord>& records) {
    std::size_t results = 0;
    for (const PlanRecord& record : records)
        results += record.results.size() - std::ranges::count(record.results, "");
    return results;
}

void run(PlanRequest request, const CLI::App& command) {
    const PresetStore store = request.treatment.presets();
    const ResizeSets sets = request.treatment.sets(store);
    request.selection.complete(store.sets(), request.treatment.options, "plan");
    if (std::ranges::find(request.selection.files, "-") != request.selection.files.end())
        throw CommandError("standard input cannot be planned; ./- is a file of that name", 2);
    const ConversionRecipes recipes = recipesFor(request.treatment.options, sets);
    if (replacesFiles(recipes))
        throw CommandError("replacing files cannot be planned, because a file that was replaced is not there "
                           "for a second run; give --out",
                           2);
    if (isTerminal(OutputStream::standardOutput))
        throw CommandError("a plan is binary; redirect standard output to a file", 2);
    const RootFolder root(typedWord(request.root));
    setMaximumPixels(request.treatment.maxPixels);
    const StopSignalsNoted untilTheEnd;
    Planned planned = plannedFiles(request, recipes, root);
    addGroups(planned.records);
    write({.resultsPerFile = recipes.size(), .treatment = treatmentAsText(command, sets)}, planned.records);
    if (planned.failures > 0)
        throw CommandError("the plan lacks " + counted(planned.failures, "item") + " that cannot be read");
    if (planned.records.empty() && !request.selection.allowsEmpty)
        throw CommandError("nothing to convert");
    if (!request.isQuiet)
        printError(counted(planned.records.size(), "file") + " planned, "
                   + counted(resultsIn(planned.records), "result"));
}

} // namespace

void addPlanCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand(
        "plan", "Write a plan of a conversion, which 'run' carries out in parts, on any machines");
    auto request = std::make_shared<PlanRequest>();
    request->treatment.addTo(*command);
    request->selection.addTo(*command);
    command
        ->add_option("--root", request->root,
                     "Folder that holds all files and results; the plan names them relative to it, so that "
                     "it also works in a copy of the folder (default: the current folder)")
        ->check(nonEmpty())
        ->option_text("FOLDER");
    command->add_flag("-q,--quiet", request->isQuiet,
                      "Print only errors to standard error (default: also what was left out, and totals)");
    request->resources.addTo(*command);
    request->treatment.addLimitsTo(*command);
    command->add_option("FILE", request->selection.files, "Pictures, or folders to search for pictures");
    groupOptions(*command);
    command->callback([request, command] { run(*request, *command); });
}

} // namespace kestrine
