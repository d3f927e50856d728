#include "kestrinectl/convert/ConvertCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/convert/ConvertDryRun.h"
#include "kestrinectl/convert/ConvertEnding.h"
#include "kestrinectl/convert/ConvertJobs.h"
#include "kestrinectl/convert/ConvertPipeline.h"
#include "kestrinectl/convert/ConvertRecipes.h"
#include "kestrinectl/convert/ConvertResources.h"
#include "kestrinectl/convert/ConvertSelection.h"
#include "kestrinectl/convert/ConvertStream.h"
#include "kestrinectl/convert/ConvertTreatment.h"
#include "kestrinectl/convert/InputBatches.h"
#include "kestrinectl/convert/OptionGroups.h"
#include "kestrinectl/convert/UpdateOptions.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/undo/RunJournal.h"
#include "platform/host/process/StopSignals.h"

#include <algorithm>

namespace kestrine {

namespace {

struct ConvertRequest {
    ConvertTreatment treatment;
    ConvertSelection selection;
    UpdateOptions update;
    ReportStyle style;
    ConvertResources resources;
    bool isDryRun = false;
    bool hasJournal = true;
};

/// Only for options that do not say what to do about the orientation.
void printHintOfPicturesNotUpright(std::size_t count, const ConvertOptions& options) {
    if (count > 0 && !options.upright)
        printHint(counted(count, "picture")
                  + " should be turned, which the set does not do; --upright does it");
}

void runOnStream(const ConvertRequest& request, const ResizeSets& sets) {
    const ConversionRecipe recipe = recipeForStream(request.treatment.options, sets);
    setMaximumPixels(request.treatment.maxPixels);
    const DecoderIsolation isolation = request.resources.isolate(1);
    convertStream(recipe, request.treatment.policy(), request.style.detail);
}

/// What all files of a run share.
struct Run {
    const ConvertRequest& request;
    const ConversionRecipes& recipes;
    std::size_t count; ///< of pictures, where names need it
    ChangeRecorder* journal;
    UpdateManifest* manifest; ///< may be null
    ConvertReport& report;

    ResizeJob jobFor(const ConvertInput& input, std::size_t number) const {
        ResizeJob job = kestrine::jobFor(input, recipes, request.treatment.policy(), number, count);
        job.recorder = journal;
        return job;
    }
    /// Whether the results are up to date; then the report says so.
    bool isFinished(std::size_t position, const ConvertInput& input, const ResizeJob& job) const {
        if (manifest == nullptr || request.update.remakesAll)
            return false;
        std::optional<ConvertResult> current = resultIfCurrent(job, input, *manifest);
        if (!current)
            return false;
        report.finished(position, *std::move(current));
        return true;
    }
};

void convertFiles(const Run& run) {
    const ConvertSelection& selection = run.request.selection;
    InputQueue queue(selection.files, selection.search);
    const unsigned jobs = run.request.resources.jobs;
    const bool isShort = queue.searchIfShort();
    constexpr unsigned withSearch = 2; // workers must not be forked beside the thread that searches
    const DecoderIsolation isolation = run.request.resources.isolate(
        isShort ? run.request.resources.threadsFor(queue.found().pictures) : std::max(jobs, withSearch));
    if (!isShort && mayFindOwnResults(selection.files, selection.search))
        queue.searchFirst();
    else if (!isShort)
        queue.searchOnThread();
    const auto expect = [&] {
        const InputQueue::Found found = queue.found();
        run.report.expect(found.pictures, found.bytes, found.isComplete);
    };
    const unsigned threads = run.request.resources.threadsFor(queue.countUpTo(jobs));
    convertAll(queue, threads,
               {.job = [&](const auto& input, std::size_t number) { return run.jobFor(input, number); },
                .isFinished = [&](std::size_t position, const auto& input,
                                  const auto& job) { return run.isFinished(position, input, job); },
                .convert =
                    [&](std::size_t position, const ConvertInput& input, ResizeJob job) {
                        expect();
                        run.report.finished(position,
                                            resultOf(input.shown, input.bytes, [&](ConvertResult& result) {
                                                convertJob(std::move(job), input, run.manifest, result);
                                            }));
                    },
                .finding = [&](std::size_t position,
                               ConvertResult finding) { run.report.found(position, std::move(finding)); }});
    expect();
    run.report.foundOthers(queue.found().otherFiles);
}

void convertDry(const Run& run) {
    const ConvertSelection& selection = run.request.selection;
    const unsigned threads = run.request.resources.jobs;
    const DecoderIsolation isolation = run.request.resources.isolate(threads);
    NamePlanner planner(Openings::all, threads);
    InputBatches batches(
        {.pictures =
             [&](const std::vector<NumberedInput>& inputs) {
                 std::vector<ResizeJob> jobs;
                 std::vector<std::string> shown;
                 std::vector<std::size_t> positions;
                 for (const auto& [input, position, number] : inputs) {
                     ResizeJob job = run.jobFor(input, number);
                     if (run.isFinished(position, input, job))
                         continue;
                     if (run.manifest != nullptr) {
                         job.earlier = run.manifest->earlierResults(job).replaceable;
                         job.recorder = run.manifest;
                     }
                     jobs.push_back(std::move(job));
                     shown.push_back(input.shown);
                     positions.push_back(position);
                 }
                 std::vector<ConvertResult> results = dryRun(jobs, shown, planner);
                 for (std::size_t i = 0; i < results.size(); ++i)
                     run.report.finished(positions[i], std::move(results[i]));
             },
         .finding = [&](std::size_t position,
                        ConvertResult finding) { run.report.found(position, std::move(finding)); }});
    findInputs(selection.files, selection.search, batches);
    batches.end();
    run.report.expect(batches.count(), 0, true);
    run.report.foundOthers(batches.otherFiles());
}

void runOnFiles(ConvertRequest request, const ResizeSets& sets) {
    const ConvertOptions& options = request.treatment.options;
    ConversionRecipes recipes = recipesFor(options, sets);
    request.update.changePlaces(recipes);
    const StopSignalsNoted untilTheEnd;
    const std::unique_ptr<UpdateManifest> manifest =
        request.update.open(recipes, request.selection.search.outFolder, request.isDryRun);
    std::optional<RunJournal> journal;
    if (replacesFiles(recipes) && request.hasJournal && !request.isDryRun)
        journal.emplace();
    request.selection.search.replaces = replacesFiles(recipes);
    setMaximumPixels(request.treatment.maxPixels);
    ConvertReport report(request.style);
    if (manifest != nullptr)
        request.selection.search.isResult = [&](const std::string& path) { return manifest->isResult(path); };
    const Run run{
        request,        recipes, countForNames(request.selection, recipes), journal ? &*journal : nullptr,
        manifest.get(), report};
    if (request.isDryRun)
        convertDry(run);
    else
        convertFiles(run);
    report.end();
    if (request.style.detail != ConvertDetail::none && !request.style.isJSON)
        printHintOfPicturesNotUpright(report.totals().notUpright, options);
    finish(report, {request.selection.allowsEmpty, journal && !journal->isEmpty() ? journal->number() : 0});
}

void run(ConvertRequest request) {
    const PresetStore store = request.treatment.presets();
    const ResizeSets sets = request.treatment.sets(store);
    request.selection.complete(store.sets(), request.treatment.options, "convert");
    const std::vector<std::string>& files = request.selection.files;
    const bool usesStream = std::ranges::find(files, "-") != files.end();
    if (usesStream && files.size() > 1)
        throw CommandError("- is one picture from standard input; it cannot be combined with files", 2);
    if (usesStream && request.update.isOn)
        throw CommandError("- and --update contradict each other: the result goes to standard output", 2);
    if (usesStream && request.isDryRun)
        throw CommandError("- and --dry-run contradict each other: the result has no name", 2);
    if (usesStream && request.style.isJSON)
        throw CommandError("- and --json contradict each other: the result goes to standard output", 2);
    if (usesStream)
        runOnStream(request, sets);
    else
        runOnFiles(request, sets);
}

} // namespace

void convertBySet(const std::string& name, const std::vector<std::string>& files) {
    run({.treatment = {.setNames = {name}},
         .selection = {.files = files},
         .style = {.detail = ConvertDetail::none}});
}

void addConvertCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("convert", "Convert pictures by sets or by options, on all cores");
    auto request = std::make_shared<ConvertRequest>();
    request->treatment.addTo(*command);
    request->selection.addTo(*command);
    request->update.addTo(*command);
    request->style.addTo(*command);
    command->add_flag("--dry-run", request->isDryRun,
                      "Print the names that the results would get, and convert nothing");
    command->add_flag(
        "!--no-journal", request->hasJournal,
        "Replace files without a journal, so that the run cannot be undone (default: every replacing run "
        "is recorded, and an error if that is not possible)");
    request->resources.addTo(*command);
    request->treatment.addLimitsTo(*command);
    command->add_option(
        "FILE", request->selection.files,
        "Pictures, or folders to search for pictures; - reads one picture from standard input and writes "
        "the result to standard output");
    groupOptions(*command);
    command->callback([request] { run(*request); });
}

} // namespace kestrine
