#include "kestrinectl/ConvertCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/ConvertChains.h"
#include "kestrinectl/ConvertReport.h"
#include "kestrinectl/PresetStore.h"
#include "kestrinectl/Words.h"
#include "models/ResizeUnit.h"
#include "platform/coregraphics/RowsAhead.h"
#include "platform/foundation/NSCollections.h"

#include <atomic>
#include <thread>

namespace kestrine {

namespace {

// More would only compete for memory.
constexpr unsigned mostJobs = 1024;

struct ConvertRequest {
    std::vector<std::string> setNames;
    std::vector<std::string> files;
    unsigned jobs = std::max(1U, std::thread::hardware_concurrency());
    bool recursive = false;
};

/// The sets that are named or, when none is, the selected ones.
ResizeSets chosenSets(const std::vector<std::string>& names) {
    const PresetStore store = PresetStore::load();
    ResizeSets sets;
    for (const std::string& name : names)
        sets.push_back(store.sets()[store.positionOf(typedWord(name))]);
    if (names.empty())
        for (const std::size_t position : store.selection())
            sets.push_back(store.sets()[position]);
    if (sets.empty())
        throw CommandError("no set is selected; name one with --set");
    return sets;
}

Object filepathOf(const ConvertInput& input) {
    const Object path = NSString::fromUTF8(input.path).object();
    if (!input.rootFolder)
        return path;
    return std::make_shared<NSDictionary>(std::map<NSString, Object>{
        {u"path", path}, {u"rootPath", NSString::fromUTF8(*input.rootFolder).object()}});
}

/// The last failure is the one that ended the work.
std::string reasonOf(const ResizeUnit::Outcome& outcome) {
    return outcome.failures.empty() ? "the set gives no output for it" : outcome.failures.back().text;
}

ConvertResult convert(const ConvertInput& input, const ResizeSets& sets) {
    ConvertResult result;
    try {
        const auto job = std::make_shared<ResizeUnit>();
        job->setValueForKey(filepathOf(input), u"filepath");
        job->setValueForKey(NSString::fromUTF8(input.path).deletingLastPathComponent().object(),
                            u"saveFolderPath");
        job->setValueForKey(std::make_shared<NSArray>(std::vector<Object>(sets.begin(), sets.end())),
                            u"resizeSets");
        job->resize();
        for (const ResizeUnit::Outcome& outcome : job->outcomes()) {
            if (outcome.isWritten)
                result.lines.push_back(input.shown + " -> " + outcome.path.utf8());
            if (!outcome.isWritten || !outcome.failures.empty())
                result.complaints.push_back(input.shown + ": " + reasonOf(outcome));
        }
    } catch (const std::bad_alloc&) {
        result.complaints.push_back(input.shown + ": there is not enough memory for it");
    } catch (const std::exception& error) {
        result.complaints.push_back(input.shown + ": " + error.what());
    }
    return result;
}

void convertAll(const std::vector<ConvertInput>& inputs, const ResizeSets& sets, unsigned jobs,
                ConvertReport& report) {
    const std::vector<ConvertChain> chains = independentChains(inputs, sets);
    std::atomic<std::size_t> nextChain = 0;
    const auto work = [&] {
        for (std::size_t chain = nextChain++; chain < chains.size(); chain = nextChain++)
            for (const std::size_t position : chains[chain])
                report.finished(position, convert(inputs[position], sets));
    };
    const std::size_t workers = std::min<std::size_t>(jobs, chains.size());
    if (workers <= 1)
        return work();
    std::vector<std::jthread> threads;
    for (std::size_t i = 0; i < workers; ++i)
        threads.emplace_back([&work] {
            const OneThreadScope wholeFileToThisCore;
            work();
        });
}

void run(const ConvertRequest& request) {
    const ResizeSets sets = chosenSets(request.setNames);
    std::vector<std::string> files;
    for (const std::string& file : request.files)
        files.push_back(typedWord(file));
    const std::vector<ConvertInput> inputs = convertInputs(files, request.recursive, sets);
    std::size_t failures = 0;
    {
        ConvertReport report(inputs.size());
        convertAll(inputs, sets, request.jobs, report);
        failures = report.failures();
    }
    if (failures > 0)
        throw CommandError(std::to_string(failures) + " of " + std::to_string(inputs.size())
                           + " could not be converted as asked");
}

} // namespace

void addConvertCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand("convert", "Apply sets to pictures, on all cores");
    auto request = std::make_shared<ConvertRequest>();
    command
        ->add_option("--set", request->setNames,
                     "A set's name, or its position such as @2; the selected sets when none is named")
        ->allow_extra_args(false);
    command
        ->add_option("-j,--jobs", request->jobs,
                     "How many files to work on at once; the number of cores when not said")
        ->check(CLI::Range(1U, mostJobs));
    command->add_flag("-r,--recursive", request->recursive, "Search folders through all their levels");
    command->add_option("FILE", request->files, "Pictures, or folders whose pictures are meant")->required();
    command->callback([request] { run(*request); });
}

} // namespace kestrine
