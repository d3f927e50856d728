#include "kestrinectl/convert/ConvertCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/convert/ConvertInputs.h"
#include "kestrinectl/convert/ConvertRecipes.h"
#include "kestrinectl/convert/ConvertReport.h"
#include "kestrinectl/convert/ConvertStream.h"
#include "kestrinectl/convert/ConvertTasks.h"
#include "kestrinectl/convert/FileLists.h"
#include "kestrinectl/convert/UpdateOptions.h"
#include "kestrinectl/sets/ChosenSets.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/NumberBetween.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/Words.h"
#include "kestrinectl/undo/RunJournal.h"
#include "models/ResizeJob.h"
#include "platform/host/process/ProcessorCount.h"
#include "platform/host/process/StopSignals.h"

#include <algorithm>
#include <iostream>

namespace kestrine {

namespace {

constexpr unsigned maxJobs = 1024; // more would only compete for memory
constexpr std::uint64_t highestPixelLimit = std::uint64_t{maximumSide} * maximumSide;

struct ConvertRequest {
    std::vector<std::string> setNames;
    ConvertOptions options;
    std::vector<std::string> files;
    unsigned jobs = processorCount();
    ConvertSearch search;
    bool allowsEmpty = false;
    bool acceptsDamaged = false;
    bool firstOnly = false;
    bool isDryRun = false;
    bool isQuiet = false;
    bool isVerbose = false;
    bool isJSON = false;
    bool hasJournal = true;
    UpdateOptions update;
    std::optional<std::string> list; ///< of further files
    bool listHasZeroBytes = false;
    std::uint64_t maxPixels = defaultMaximumPixels;
    std::string isolation = "auto";

    ReportStyle style() const {
        return {isQuiet     ? ConvertDetail::none
                : isVerbose ? ConvertDetail::all
                            : ConvertDetail::lines,
                isJSON};
    }
};

/// Only for options that do not say what to do about the orientation.
void printHintOfLyingPictures(std::size_t count, const ConvertOptions& options) {
    if (count > 0 && !options.upright)
        printHint(counted(count, "picture")
                  + " should be turned, which the set does not do; --upright does it");
}

void throwWhenStopped(const ConvertReport& report, std::size_t count) {
    if (const int signal = StopSignalsNoted::noted(); signal != 0)
        throw CommandError("stopped by " + std::string(nameOfStopSignal(signal)) + ": "
                               + counted(report.done(), "file") + " done, "
                               + std::to_string(count - report.done()) + " left",
                           128 + signal);
}

bool replacesFiles(const ConversionRecipes& recipes) {
    return recipes.size() == 1 && recipes.front().place.replaces;
}

/// Ends the output with the totals: a line or an error for people, an object for scripts.
void finish(const ConvertRequest& request, const ConvertReport& report, std::size_t count,
            std::size_t journal) {
    const ConvertTotals& totals = report.totals();
    const bool isAlone = totals.finished() < 2;
    std::string line = totalsLine(totals, report.elapsed());
    if (journal != 0)
        line += "; 'kestrinectl undo " + std::to_string(journal) + "' brings the originals back";
    std::string failures = failuresLine(totals);
    if (failures.empty() && totals.finished() == 0 && !request.allowsEmpty)
        failures = "nothing to convert";
    else if (!failures.empty() && !isAlone && !request.isQuiet && !request.isJSON)
        failures += "; " + line;
    const int signal = StopSignalsNoted::noted();
    if (request.isJSON)
        std::cout << toJSON(totals, {report.elapsed(), count - report.done(), signal,
                                     signal != 0        ? 128 + signal
                                     : failures.empty() ? 0
                                                        : 1,
                                     journal})
                         .dump()
                  << "\n";
    throwWhenStopped(report, count);
    if (!failures.empty())
        throw CommandError(failures);
    if (!request.isJSON && !request.isQuiet && (!isAlone || request.isVerbose) && totals.finished() > 0)
        printError(line);
}

JobPolicy policyOf(const ConvertRequest& request) {
    return {.onlyWithResult = true,
            .refusesDamaged = !request.acceptsDamaged,
            .replacesOnlyPictures = !request.firstOnly};
}

std::uint64_t totalBytes(const std::vector<ConvertInput>& inputs) {
    std::uint64_t bytes = 0;
    for (const ConvertInput& input : inputs)
        bytes += input.bytes;
    return bytes;
}

void runOnStream(const ConvertRequest& request, const ResizeSets& sets) {
    const ConversionRecipe recipe = recipeForStream(request.options, sets);
    setMaximumPixels(request.maxPixels);
    const DecoderIsolation isolation(*isolationNamed(request.isolation), 1);
    convertStream(recipe, policyOf(request), request.style().detail);
}

void convertTasks(const ConvertRequest& request, ConvertTasks tasks, ChangeRecorder* journal,
                  UpdateManifest* manifest, ConvertReport& report) {
    if (manifest != nullptr && !request.update.remakesAll)
        removeCurrent(tasks, *manifest, report);
    if (tasks.jobs.empty())
        return;
    for (ResizeJob& job : tasks.jobs)
        job.recorder = journal;
    setMaximumPixels(request.maxPixels);
    const auto threads = static_cast<unsigned>(std::min<std::size_t>(tasks.jobs.size(), request.jobs));
    const DecoderIsolation isolation(*isolationNamed(request.isolation), threads);
    if (request.isDryRun)
        convertDry(std::move(tasks), threads, manifest, report);
    else
        convertAll(tasks, threads, manifest, report);
}

void runOnFiles(ConvertRequest request, const ResizeSets& sets) {
    ConversionRecipes recipes = recipesFor(request.options, sets);
    request.update.changePlaces(recipes);
    if (request.options.out)
        request.search.outFolder = absolutePath(typedWord(*request.options.out)).native();
    const StopSignalsNoted untilTheEnd;
    const ConvertInputs inputs = findInputs(request.files, request.search);
    const std::size_t count = inputs.pictures.size();
    const std::unique_ptr<UpdateManifest> manifest =
        request.update.open(recipes, request.search.outFolder, request.isDryRun);
    std::optional<RunJournal> journal;
    if (count > 0 && replacesFiles(recipes) && request.hasJournal && !request.isDryRun)
        journal.emplace();
    ConvertReport report(count, totalBytes(inputs.pictures), request.style());
    report.found(inputs.findings, inputs.otherFiles);
    convertTasks(request, tasksFor(inputs.pictures, recipes, policyOf(request)),
                 journal ? &*journal : nullptr, manifest.get(), report);
    report.end();
    if (!request.isQuiet && !request.isJSON)
        printHintOfLyingPictures(report.totals().leftLying, request.options);
    finish(request, report, count, journal && !journal->isEmpty() ? journal->number() : 0);
}

void run(ConvertRequest request) {
    const PresetStore store = PresetStore::load();
    const ResizeSets sets =
        chosenSets(store, request.setNames, describeResult(request.options), "--longest 1200 --out small");
    request.search.storedSets = store.sets();
    for (auto* words : {&request.files, &request.search.included, &request.search.excluded})
        for (std::string& word : *words)
            word = typedWord(word);
    if (request.list)
        for (const std::string& name : namesInList(typedWord(*request.list), request.listHasZeroBytes))
            request.files.push_back(name);
    if (request.listHasZeroBytes && !request.list)
        throw CommandError("-0 needs --files-from", 2);
    if (request.files.empty() && !request.list)
        throw CommandError("FILE is required; 'kestrinectl help convert' explains its use", 2);
    const bool usesStream = std::ranges::find(request.files, "-") != request.files.end();
    if (usesStream && request.files.size() > 1)
        throw CommandError("- is one picture from standard input; it cannot be combined with files", 2);
    if (usesStream && request.update.isOn)
        throw CommandError("- and --update contradict each other: the result goes to standard output", 2);
    if (usesStream && request.isJSON)
        throw CommandError("- and --json contradict each other: the result goes to standard output", 2);
    if (usesStream)
        runOnStream(request, sets);
    else
        runOnFiles(std::move(request), sets);
}

struct OptionGroup {
    const char* title;
    std::initializer_list<const char*> options;
};

/// The help has the groups in the order in which their first options are added.
void groupOptions(CLI::App& command) {
    const OptionGroup groups[] = {
        {"Sets", {"--set"}},
        {"Size",
         {"--longest", "--width", "--height", "--percent", "--fit", "--cover", "--gravity", "--pad",
          "--no-enlarge"}},
        {"Format",
         {"--format", "--quality", "--max-bytes", "--lossless", "--effort", "--progressive",
          "--skip-fitting"}},
        {"Orientation and colours", {"--upright", "--background", "--profile"}},
        {"Metadata", {"--metadata", "--exif", "--times"}},
        {"Places and names of results", {"--out", "--name", "--replace"}},
        {"Choice of files",
         {"--recursive", "--all-folders", "--include", "--exclude", "--files-from", "--null", "--allow-empty",
          "--accept-damaged", "--first-only"}},
        {"Repeated runs", {"--update", "--force", "--manifest", "--no-wait"}},
        {"Output", {"--quiet", "--verbose", "--json", "--dry-run"}},
        {"Safety and resources", {"--no-journal", "--jobs", "--max-pixels", "--isolation"}},
    };
    for (const OptionGroup& group : groups)
        for (const char* option : group.options)
            command.get_option(option)->group(group.title);
}

} // namespace

void convertBySet(const std::string& name, const std::vector<std::string>& files) {
    run({.setNames = {name}, .files = files, .isQuiet = true});
}

void addConvertCommand(CLI::App& program) {
    CLI::App* command =
        program.add_subcommand("convert", "Convert pictures by sets or by options, on all cores");
    auto request = std::make_shared<ConvertRequest>();
    command
        ->add_option(
            "--set", request->setNames,
            "Set to apply: a name, or a position such as @2; may be repeated (default: the selected sets, or "
            "none if an option gives a size, a format or a quality)")
        ->allow_extra_args(false);
    request->options.addTo(*command);
    command->add_flag("-r,--recursive", request->search.recursive,
                      "Search sub-folders too, except those named like a stored set (default: no)");
    command
        ->add_option(
            "--include", request->search.included,
            "In folders, take only files that match this glob: the path below the given folder, or the "
            "name if the glob has no slash; may be repeated (default: all pictures)")
        ->allow_extra_args(false)
        ->option_text("GLOB");
    command
        ->add_option("--exclude", request->search.excluded,
                     "In folders, leave out files that match this glob; may be repeated (default: none)")
        ->allow_extra_args(false)
        ->option_text("GLOB");
    command
        ->add_option(
            "--files-from", request->list,
            "Convert also the files and folders that this list names, one per line; - for standard input")
        ->option_text("FILE");
    command->add_flag("-0,--null", request->listHasZeroBytes,
                      "The names in the list end with a zero byte instead of a newline");
    request->update.addTo(*command);
    command
        ->add_flag("-q,--quiet", request->isQuiet,
                   "Print only errors (default: a line for each result, warnings, hints and totals)")
        ->excludes(command->add_flag("-v,--verbose", request->isVerbose,
                                     "Print also sizes and times, and the files that need no conversion"));
    command->add_flag(
        "--json", request->isJSON,
        "Print one JSON object per file instead of lines and messages, and a last one with totals");
    command->add_flag(
        "!--no-journal", request->hasJournal,
        "Replace files without a journal, so that the run cannot be undone (default: every replacing run "
        "is recorded, and an error if that is not possible)");
    command->add_flag("--dry-run", request->isDryRun,
                      "Print the names that the results would get, and convert nothing");
    command->add_flag("--all-folders", request->search.allFolders,
                      "Search all sub-folders, also those named like a stored set (default: no)");
    command->add_flag("--allow-empty", request->allowsEmpty,
                      "Exit with status 0 when there are no pictures (default: status 1)");
    command->add_flag("--accept-damaged", request->acceptsDamaged,
                      "Convert damaged pictures of which a part can be shown, with a warning "
                      "(default: an error, nothing is written)");
    command->add_flag(
        "--first-only", request->firstOnly,
        "Of files with several frames, pages or layers, and of raw and vector files, convert the first "
        "picture without a warning, also where it replaces the whole file (default: a warning, and such "
        "files are not replaced, which is an error)");
    command
        ->add_option("-j,--jobs", request->jobs,
                     "How many files to convert at the same time (default: the number of cores)")
        ->check(numberBetween(1U, maxJobs))
        ->option_text("N");
    command
        ->add_option("--max-pixels", request->maxPixels,
                     "Refuse pictures and results with more than N pixels (default: 1073741824)")
        ->check(numberBetween(std::uint64_t{1}, highestPixelLimit))
        ->option_text("N");
    command
        ->add_option("--isolation", request->isolation,
                     "Decode in worker processes with the protection that the system offers (auto), only "
                     "with all of it (strict), or in this process (off) (default: auto)")
        ->check(CLI::Validator(
            [](const std::string& word) -> std::string {
                return isolationNamed(word) ? "" : "must be auto, strict or off";
            },
            ""))
        ->option_text("auto|strict|off");
    command->add_option(
        "FILE", request->files,
        "Pictures, or folders to search for pictures; - reads one picture from standard input and writes "
        "the result to standard output");
    groupOptions(*command);
    command->callback([request] { run(*request); });
}

} // namespace kestrine
