#include "kestrinectl/convert/ConvertCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/convert/ConvertEnding.h"
#include "kestrinectl/convert/ConvertRecipes.h"
#include "kestrinectl/convert/ConvertResources.h"
#include "kestrinectl/convert/ConvertSelection.h"
#include "kestrinectl/convert/ConvertStream.h"
#include "kestrinectl/convert/ConvertTasks.h"
#include "kestrinectl/convert/ConvertTreatment.h"
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
void printHintOfLyingPictures(std::size_t count, const ConvertOptions& options) {
    if (count > 0 && !options.upright)
        printHint(counted(count, "picture")
                  + " should be turned, which the set does not do; --upright does it");
}

std::uint64_t totalBytes(const std::vector<ConvertInput>& inputs) {
    std::uint64_t bytes = 0;
    for (const ConvertInput& input : inputs)
        bytes += input.bytes;
    return bytes;
}

void runOnStream(const ConvertRequest& request, const ResizeSets& sets) {
    const ConversionRecipe recipe = recipeForStream(request.treatment.options, sets);
    setMaximumPixels(request.treatment.maxPixels);
    const DecoderIsolation isolation = request.resources.isolate(1);
    convertStream(recipe, request.treatment.policy(), request.style.detail);
}

void convertTasks(const ConvertRequest& request, ConvertTasks tasks, ChangeRecorder* journal,
                  UpdateManifest* manifest, ConvertReport& report) {
    if (manifest != nullptr && !request.update.remakesAll)
        removeCurrent(tasks, *manifest, report);
    if (tasks.jobs.empty())
        return;
    for (ResizeJob& job : tasks.jobs)
        job.recorder = journal;
    setMaximumPixels(request.treatment.maxPixels);
    const unsigned threads = request.resources.threadsFor(tasks.jobs.size());
    const DecoderIsolation isolation = request.resources.isolate(threads);
    if (request.isDryRun)
        convertDry(std::move(tasks), threads, manifest, report);
    else
        convertAll(tasks, threads, manifest, report);
}

void runOnFiles(const ConvertRequest& request, const ResizeSets& sets) {
    const ConvertOptions& options = request.treatment.options;
    ConversionRecipes recipes = recipesFor(options, sets);
    request.update.changePlaces(recipes);
    const StopSignalsNoted untilTheEnd;
    const ConvertInputs inputs = findInputs(request.selection.files, request.selection.search);
    const std::size_t count = inputs.pictures.size();
    const std::unique_ptr<UpdateManifest> manifest =
        request.update.open(recipes, request.selection.search.outFolder, request.isDryRun);
    std::optional<RunJournal> journal;
    if (count > 0 && replacesFiles(recipes) && request.hasJournal && !request.isDryRun)
        journal.emplace();
    ConvertReport report(count, totalBytes(inputs.pictures), request.style);
    report.found(inputs.findings, inputs.otherFiles);
    convertTasks(request, tasksFor(inputs.pictures, recipes, request.treatment.policy()),
                 journal ? &*journal : nullptr, manifest.get(), report);
    report.end();
    if (request.style.detail != ConvertDetail::none && !request.style.isJSON)
        printHintOfLyingPictures(report.totals().leftLying, options);
    finish(report,
           {count, request.selection.allowsEmpty, journal && !journal->isEmpty() ? journal->number() : 0});
}

void run(ConvertRequest request) {
    const PresetStore store = PresetStore::load();
    const ResizeSets sets = request.treatment.sets(store);
    request.selection.complete(store.sets(), request.treatment.options.out, "convert");
    const std::vector<std::string>& files = request.selection.files;
    const bool usesStream = std::ranges::find(files, "-") != files.end();
    if (usesStream && files.size() > 1)
        throw CommandError("- is one picture from standard input; it cannot be combined with files", 2);
    if (usesStream && request.update.isOn)
        throw CommandError("- and --update contradict each other: the result goes to standard output", 2);
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
