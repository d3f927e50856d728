#include "kestrinectl/ConvertCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/ConvertChains.h"
#include "kestrinectl/ConvertContents.h"
#include "kestrinectl/ConvertReport.h"
#include "kestrinectl/DecoderIsolation.h"
#include "kestrinectl/Messages.h"
#include "kestrinectl/NumberBetween.h"
#include "kestrinectl/PresetStore.h"
#include "kestrinectl/ShownPath.h"
#include "kestrinectl/Words.h"
#include "models/ResizeJob.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/host/process/ProcessorCount.h"
#include "platform/host/process/StopSignals.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>

namespace kestrine {

namespace {

constexpr unsigned maxJobs = 1024; // more would only compete for memory
constexpr std::uint64_t highestPixelLimit = std::uint64_t{maximumSide} * maximumSide;

struct ConvertRequest {
    std::vector<std::string> setNames;
    std::vector<std::string> files;
    unsigned jobs = processorCount();
    ConvertSearch search;
    bool allowsEmpty = false;
    bool acceptsDamaged = false;
    bool firstOnly = false;
    std::uint64_t maxPixels = defaultMaximumPixels;
    std::string isolation = "auto";
};

/// The named sets or, if none is named, the selected ones.
ResizeSets chosenSets(const PresetStore& store, const std::vector<std::string>& names) {
    ResizeSets sets;
    for (const std::string& name : names)
        sets.push_back(store.sets()[store.positionOf(name)]);
    if (names.empty())
        for (const std::size_t position : store.selection())
            sets.push_back(store.sets()[position]);
    if (sets.empty())
        throw CommandError("no set is selected; name one with --set");
    return sets;
}

std::string counted(std::size_t count, const std::string& noun) {
    return std::to_string(count) + " " + noun + (count == 1 ? "" : "s");
}

std::string complaintOf(const JobOutcome& outcome, const std::string& path) {
    if (outcome.isWritten)
        return "the original stays, it could not go to the trash (" + outcome.trashFailure->text
               + "); the result is " + shownPath(outcome.path.utf8());
    std::string complaint = withoutPath(outcome.failure->text, path);
    if (outcome.refusal == Refusal::holdsMore)
        complaint = reasonNotToReplace(outcome.contents);
    if (outcome.refusal == Refusal::damaged)
        complaint = "the picture is damaged (" + complaint
                    + "), nothing was written; --accept-damaged converts it anyway";
    if (!outcome.trashedPath.empty())
        complaint +=
            "; the original is in the trash: restore it there, or move it back from " + outcome.trashedPath;
    return complaint;
}

/// Sets often fail for the same reason, so one line reports it.
void addOnce(std::vector<std::string>& lines, const std::string& line) {
    if (std::ranges::find(lines, line) == lines.end())
        lines.push_back(line);
}

void addOutcome(ConvertResult& result, const ConvertInput& input, const JobOutcome& outcome) {
    const std::string& shown = input.shown;
    if (outcome.isWritten)
        result.lines.push_back(shown + " -> " + shownPath(outcome.path.utf8()));
    if (const auto omission = omissionIn(outcome.contents); omission && outcome.isWritten)
        addOnce(result.warnings, shown + ": " + *omission);
    if (outcome.isWritten && outcome.damage)
        result.warnings.push_back(shown + ": the picture is damaged (" + outcome.damage->text
                                  + "); the result shows what could be read");
    if (!outcome.isWritten || outcome.trashFailure)
        addOnce(result.complaints, shown + ": " + complaintOf(outcome, input.path));
}

/// Converts files and reports them; several threads may do so at once.
class Conversion {
public:
    Conversion(const std::vector<ConvertInput>& inputs, const ResizeSets& sets, JobPolicy policy,
               ConvertReport& report)
        : inputs_(inputs), sets_(sets), policy_(policy), report_(report) {}

    /// Returns when all are finished or, after a stop signal, those that were begun.
    void run(unsigned jobs) {
        const std::vector<ConvertChain> chains = independentChains(inputs_, sets_);
        const std::size_t workers = std::min<std::size_t>(jobs, chains.size());
        if (workers <= 1)
            return work(chains);
        workOnThreads(chains, workers);
        if (exception_ != nullptr)
            std::rethrow_exception(exception_);
    }

private:
    /// This thread is one of them. If the system permits fewer threads, they do the work of all.
    void workOnThreads(const std::vector<ConvertChain>& chains, std::size_t count) {
        std::vector<std::jthread> others;
        try {
            while (others.size() + 1 < count)
                others.emplace_back([this, &chains] { workOnThread(chains); });
        } catch (const std::exception& tooManyThreads) {
            (void)tooManyThreads;
        }
        workOnThread(chains);
    }

    void workOnThread(const std::vector<ConvertChain>& chains) {
        const OneThreadScope wholeFileToThisCore;
        try {
            work(chains);
        } catch (const std::exception&) {
            const std::lock_guard lock(exceptionMutex_);
            exception_ = std::current_exception();
        }
    }

    void work(const std::vector<ConvertChain>& chains) {
        for (std::size_t chain = nextChain_++; chain < chains.size(); chain = nextChain_++)
            for (const std::size_t position : chains[chain]) {
                if (StopSignalsNoted::noted() != 0)
                    return;
                report_.finished(position, convert(inputs_[position]));
            }
    }

    ConvertResult convert(const ConvertInput& input) const {
        ConvertResult result;
        try {
            for (const JobOutcome& outcome : runJob(jobFor(input)))
                addOutcome(result, input, outcome);
        } catch (const std::bad_alloc&) {
            result.complaints.push_back(input.shown + ": not enough memory");
        } catch (const std::exception& error) {
            result.complaints.push_back(input.shown + ": " + error.what());
        }
        return result;
    }

    ResizeJob jobFor(const ConvertInput& input) const {
        const NSString path = NSString::fromUTF8(input.path);
        const OptionalString root =
            input.rootFolder ? OptionalString(NSString::fromUTF8(*input.rootFolder)) : std::nullopt;
        return {path, root, path.deletingLastPathComponent(), sets_, policy_};
    }

    const std::vector<ConvertInput>& inputs_;
    const ResizeSets& sets_;
    const JobPolicy policy_;
    ConvertReport& report_;
    std::atomic<std::size_t> nextChain_ = 0;
    std::mutex exceptionMutex_;
    std::exception_ptr exception_; ///< what ended a thread's work; guarded by exceptionMutex_
};

void printFindings(const ConvertInputs& inputs) {
    for (const auto& sentences : {inputs.complaints, inputs.leftOut, inputs.emptyFolders})
        for (const std::string& sentence : sentences)
            printError(sentence);
    if (inputs.otherFiles > 0)
        printError(counted(inputs.otherFiles, "other file") + " left out");
}

void throwWhenStopped(std::size_t done, std::size_t count) {
    if (const int signal = StopSignalsNoted::noted(); signal != 0)
        throw CommandError("stopped by " + std::string(nameOfStopSignal(signal)) + ": "
                               + counted(done, "file") + " done, " + std::to_string(count - done) + " left",
                           128 + signal);
}

void throwWhenFailed(const ConvertInputs& inputs, std::size_t failures, bool allowsEmpty) {
    const std::size_t files = inputs.pictures.size() + inputs.unreadableFiles;
    failures += inputs.unreadableFiles;
    std::string summary;
    if (failures > 0)
        summary = std::to_string(failures) + " of " + counted(files, "file")
                  + " could not be converted as requested";
    if (inputs.unreadableFolders > 0)
        summary += (summary.empty() ? "" : ", ") + counted(inputs.unreadableFolders, "folder")
                   + " could not be read";
    if (summary.empty() && files == 0 && !allowsEmpty)
        summary = "nothing to convert";
    if (!summary.empty())
        throw CommandError(summary);
}

void run(ConvertRequest request) {
    const PresetStore store = PresetStore::load();
    const ResizeSets sets = chosenSets(store, request.setNames);
    request.search.storedSets = store.sets();
    for (std::string& file : request.files)
        file = typedWord(file);
    const StopSignalsNoted untilTheEnd;
    const ConvertInputs inputs = findInputs(request.files, request.search);
    printFindings(inputs);
    std::size_t done = 0, failures = 0;
    {
        ConvertReport report(inputs.pictures.size());
        const JobPolicy policy{.onlyWithResult = true,
                               .refusesDamaged = !request.acceptsDamaged,
                               .replacesOnlyPictures = !request.firstOnly};
        setMaximumPixels(request.maxPixels);
        const auto jobs =
            static_cast<unsigned>(std::clamp<std::size_t>(inputs.pictures.size(), 1, request.jobs));
        const DecoderIsolation isolation(*isolationNamed(request.isolation), jobs);
        Conversion(inputs.pictures, sets, policy, report).run(jobs);
        done = report.done();
        failures = report.failures();
    }
    throwWhenStopped(done, inputs.pictures.size());
    throwWhenFailed(inputs, failures, request.allowsEmpty);
}

} // namespace

void addConvertCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand("convert", "Apply sets to pictures, on all cores");
    auto request = std::make_shared<ConvertRequest>();
    command
        ->add_option(
            "--set", request->setNames,
            "Set to apply: a name, or a position such as @2; may be repeated (default: the selected sets)")
        ->allow_extra_args(false);
    command
        ->add_option("-j,--jobs", request->jobs,
                     "How many files to convert at the same time (default: the number of cores)")
        ->check(numberBetween(1U, maxJobs))
        ->option_text("N");
    command->add_flag("-r,--recursive", request->search.recursive,
                      "Search sub-folders too, except those named like a stored set (default: no)");
    command->add_flag("--all-folders", request->search.allFolders,
                      "Search all sub-folders, also those named like a stored set (default: no)");
    command->add_flag("--allow-empty", request->allowsEmpty,
                      "Exit with status 0 when there are no pictures (default: status 1)");
    command->add_flag("--accept-damaged", request->acceptsDamaged,
                      "Convert damaged pictures of which a part can be shown, with a warning "
                      "(default: an error, nothing is written)");
    command->add_flag(
        "--first-only", request->firstOnly,
        "Convert only the first frame or page without a warning, and let replacing sets replace "
        "animations, documents, and layered, raw and vector files (default: an error)");
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
    command->add_option("FILE", request->files, "Pictures, or folders to search for pictures")->required();
    command->callback([request] { run(*request); });
}

} // namespace kestrine
