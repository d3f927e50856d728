#include "kestrinectl/shards/MergeCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/OpenedInput.h"
#include "kestrinectl/shards/PlanFile.h"
#include "kestrinectl/shards/ShardLog.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/NumberBetween.h"
#include "kestrinectl/text/ShownNumbers.h"
#include "kestrinectl/text/ShownPath.h"
#include "kestrinectl/text/Words.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <set>

namespace kestrine {

namespace {

struct MergeRequest {
    std::string plan;
    std::vector<std::string> logs;
    std::uint32_t shards = 0; ///< 0 for none
    std::optional<std::string> root;
    bool checksResults = false;
    bool isQuiet = false;
    bool isJSON = false;
};

/// What the logs say about a file.
struct FileState {
    enum class Status : std::uint8_t { missing, failed, done } status = Status::missing;
    std::size_t log = 0; ///< the number of the log that says it, from 1
    std::string text;    ///< the line of the log if it is needed, or why the file failed
};

/// A line without its end; false at the end of the file, and for a last line that was cut off.
bool nextLine(std::istream& log, std::string& line) { return std::getline(log, line) && !log.eof(); }

/// The states of the files of a plan, by their positions.
class States {
public:
    /// `root`: where results must be for a file to be done; null if only the logs count.
    States(std::uint64_t plan, std::size_t count, bool keepsLines, const RootFolder* root)
        : plan_(plan), states_(count), keepsLines_(keepsLines), root_(root) {}

    /// Where logs contradict each other, a file that one of them has done is done. In a log, the last line
    /// about a file counts.
    void addLog(const std::string& path) {
        ++log_;
        std::ifstream log = openedInput("log", path);
        bool isOfPlan = false;
        for (std::string line; nextLine(log, line);) {
            const LogLine read = readLogLine(line);
            if (read.isOfOtherVersion)
                throw logOfOtherVersion(path);
            if (read.plan && *read.plan != plan_)
                throw CommandError("the log " + shownPath(path) + " belongs to another plan");
            isOfPlan = isOfPlan || read.plan.has_value();
            if (isOfPlan && read.file && read.file->record < states_.size())
                add(*read.file, line);
        }
        if (!isOfPlan)
            throw CommandError(shownPath(path) + " is not a log of 'kestrinectl run'");
    }

    const FileState& operator[](std::uint64_t position) const { return states_[position]; }

private:
    void add(const LoggedFile& file, const std::string& line) {
        using Status = FileState::Status;
        FileState& state = states_[file.record];
        if (state.status == Status::done && state.log != log_)
            return;
        state.status = !file.isDone ? Status::failed : hasResults(file) ? Status::done : Status::missing;
        state.log = log_;
        state.text = keepsLines_ ? line : file.isDone ? "" : file.reason;
    }

    bool hasResults(const LoggedFile& file) const {
        return root_ == nullptr || std::ranges::all_of(file.results, [this](const LoggedResult& result) {
                   return isBelowRoot(result.path) && isInPlace(result, *root_);
               });
    }

    const std::uint64_t plan_;
    std::vector<FileState> states_;
    const bool keepsLines_;
    const RootFolder* root_;
    std::size_t log_ = 0; ///< the number of the current log, from 1
};

struct MergeTotals {
    std::size_t done = 0, failed = 0, missing = 0;
};

nlohmann::ordered_json missingAsJSON(const std::string& source, std::uint64_t position) {
    ConvertResult result{.source = source};
    nlohmann::ordered_json object = toJSON(result, position);
    object["status"] = "missing";
    return object;
}

void printState(const MergeRequest& request, const PlanRecord& record, std::uint64_t position,
                const FileState& state) {
    using Status = FileState::Status;
    const std::string source = shownPath(record.source);
    if (request.isJSON)
        std::cout << (state.status == Status::missing ? missingAsJSON(source, position).dump() : state.text)
                  << "\n";
    else if (state.status == Status::missing && !request.isQuiet)
        printLine(source + ": missing");
    else if (state.status == Status::failed && !request.isQuiet)
        printLine(source + ": failed, " + state.text);
}

void add(MergeTotals& totals, const FileState& state) {
    using Status = FileState::Status;
    ++(state.status == Status::done     ? totals.done
       : state.status == Status::failed ? totals.failed
                                        : totals.missing);
}

void finish(const MergeRequest& request, const MergeTotals& totals) {
    if (request.isJSON)
        std::cout << nlohmann::ordered_json{{"merge",
                                             {{"done", totals.done},
                                              {"failed", totals.failed},
                                              {"missing", totals.missing}}}}
                         .dump()
                  << "\n";
    const std::size_t all = totals.done + totals.failed + totals.missing;
    if (totals.failed + totals.missing > 0)
        throw CommandError(counted(all, "file") + ": " + std::to_string(totals.missing) + " missing, "
                           + std::to_string(totals.failed) + " failed");
    if (!request.isJSON && !request.isQuiet)
        printError("all done: " + counted(all, "file"));
}

/// One number for each shard that has something to do: "3,7".
void printUnfinished(const std::set<std::uint64_t>& shards) {
    std::string numbers;
    for (const std::uint64_t shard : shards)
        numbers += (numbers.empty() ? "" : ",") + std::to_string(shard);
    if (!numbers.empty())
        printLine(numbers);
}

/// The logs that are named, else the logs beside the plan with the names that 'run' gives them.
std::vector<std::string> logsOf(const MergeRequest& request, const std::string& plan) {
    std::vector<std::string> logs;
    for (const std::string& log : request.logs)
        logs.push_back(typedWord(log));
    if (!logs.empty())
        return logs;
    const std::string folder = folderOf(plan);
    std::error_code error;
    for (std::filesystem::directory_iterator it(folder, error), end; !error && it != end; it.increment(error))
        if (const std::string name = it->path().filename(); isDefaultLog(nameOf(plan), name))
            logs.push_back(joinedPath(folder, name));
    if (error)
        throw CommandError("cannot search " + shownPath(folder) + " for logs: " + error.message()
                           + "; name the logs");
    std::ranges::sort(logs);
    return logs;
}

void run(const MergeRequest& request) {
    const std::string plan = typedWord(request.plan);
    if (specialFileExists(plan))
        throw CommandError(
            "the plan " + shownPath(plan) + " is not a regular file; it is read twice, so save it as one", 2);
    PlanFile first(plan);
    std::uint64_t count = 0;
    for (PlanRecord record; first.reader().next(record);)
        ++count;
    std::optional<RootFolder> root;
    if (request.checksResults)
        root.emplace(request.root ? typedWord(*request.root) : folderOf(plan));
    States states(first.reader().digest(), count, request.isJSON, root ? &*root : nullptr);
    for (const std::string& log : logsOf(request, plan))
        states.addLog(log);

    PlanFile again(plan);
    MergeTotals totals;
    std::set<std::uint64_t> unfinished;
    PlanRecord record;
    for (std::uint64_t position = 0; position < count && again.reader().next(record); ++position) {
        const FileState& state = states[position];
        add(totals, state);
        if (request.shards == 0)
            printState(request, record, position, state);
        else if (state.status != FileState::Status::done)
            unfinished.insert(shardOf(record.group, request.shards));
    }
    printUnfinished(unfinished);
    finish(request, totals);
}

} // namespace

void addMergeCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand(
        "merge", "Join the logs of a plan's runs, and name what is missing and what failed");
    auto request = std::make_shared<MergeRequest>();
    CLI::Option* json = command->add_flag(
        "--json", request->isJSON,
        "Print one JSON object per file, in the order of the plan, and a last one with totals");
    command
        ->add_option("--shards", request->shards,
                     "Print only which shards of N are not done, such as 3,7, to run them again")
        ->check(numberBetween(1U, maxShards))
        ->excludes(json)
        ->option_text("N");
    CLI::Option* results = command->add_flag(
        "--results", request->checksResults,
        "Count a file as missing if a result is not there with the logged length and time, or "
        "else the logged content (default: the logs decide)");
    command
        ->add_option("--root", request->root,
                     "With --results, the folder that holds the results (default: the folder of the plan)")
        ->check(nonEmpty())
        ->needs(results)
        ->option_text("FOLDER");
    command->add_flag("-q,--quiet", request->isQuiet,
                      "Print only errors (default: a line for each file that is missing or failed)");
    command->add_option("PLAN", request->plan, "The plan")->required()->check(nonEmpty());
    command->add_option("LOG", request->logs, "The logs of its runs (default: PLAN.*-of-*.jsonl)")
        ->check(nonEmpty());
    command->callback([request] { run(*request); });
}

} // namespace kestrine
