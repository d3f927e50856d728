#include "kestrinectl/shards/RunCommand.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/convert/ConvertEnding.h"
#include "kestrinectl/convert/ConvertJobs.h"
#include "kestrinectl/convert/ConvertResources.h"
#include "kestrinectl/convert/ForEachPosition.h"
#include "kestrinectl/shards/PlanFile.h"
#include "kestrinectl/shards/ShardRun.h"
#include "kestrinectl/text/Messages.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/ShownPath.h"
#include "kestrinectl/text/Words.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/process/StopSignals.h"

#include <iostream>

namespace kestrine {

namespace {

struct RunRequest {
    std::string plan;
    std::string shard = "1/1";
    std::optional<std::string> root, log, list;
    bool waits = true;
    ReportStyle style;
    ConvertResources resources;
};

/// A record of the plan and its position there.
struct Task {
    std::uint64_t position;
    PlanRecord record;
};

/// What a run does.
struct Work {
    PlanHeader header;
    std::uint64_t plan = 0; ///< its digest
    std::vector<Task> tasks;
    std::uint64_t bytes = 0; ///< of the sources
};

Work workIn(const std::string& path, Shard shard) {
    PlanFile file(path);
    Work work{.header = file.reader().header(), .tasks = {}};
    PlanRecord record;
    for (std::uint64_t position = 0; file.reader().next(record); ++position)
        if (shard.holds(record.group)) {
            work.bytes += record.bytes;
            work.tasks.push_back({position, std::move(record)});
        }
    work.plan = file.reader().digest();
    return work;
}

/// Positions of tasks that are done one after another.
using Chain = std::vector<std::size_t>;

/// Tasks of a group are done one after another, in the order of the plan.
std::vector<Chain> chainsOf(const std::vector<Task>& tasks) {
    std::vector<Chain> chains;
    std::unordered_map<std::uint64_t, std::size_t> byGroup;
    for (std::size_t i = 0; i < tasks.size(); ++i) {
        const auto [known, isNew] = byGroup.try_emplace(tasks[i].record.group, chains.size());
        if (isNew)
            chains.emplace_back();
        chains[known->second].push_back(i);
    }
    return chains;
}

/// The log and the report of a run.
class RunRecord {
public:
    RunRecord(ShardLog& log, ConvertReport& report) : log_(log), report_(report) {}

    /// Any thread. A failure to log does not end the run, since the next one finds the results.
    void finished(std::size_t position, const Task& task, ConvertResult result) {
        if (const Result<void> logged = add(task, result); !logged)
            result.complain("the log does not name the result (" + logged.failure().text + ")",
                            "system error");
        report_.finished(position, std::move(result));
    }

    /// Whether anything was added to the log.
    bool hasNews() const { return hasNews_; }

private:
    Result<void> add(const Task& task, const ConvertResult& result) {
        const std::lock_guard lock(mutex_);
        const LoggedFile* known = log_.find(task.position);
        if (result.isUpToDate && known != nullptr && known->isDone)
            return {};
        hasNews_ = true;
        return log_.add(toJSON(result, task.position));
    }

    ShardLog& log_;
    ConvertReport& report_;
    std::mutex mutex_;
    bool hasNews_ = false;
};

bool convertTasks(const RunRequest& request, const Work& work, const PlannedTreatment& planned,
                  const RootFolder& root, ShardLog& log, ConvertReport& report) {
    RunRecord record(log, report);
    const unsigned threads = request.resources.threadsFor(work.tasks.size());
    setMaximumPixels(planned.treatment.maxPixels);
    const DecoderIsolation isolation = request.resources.isolate(threads);
    const ShardRun run(root, planned);
    const std::vector<Chain> chains = chainsOf(work.tasks);
    forEachPosition(chains.size(), threads, [&](std::size_t chain) {
        for (const std::size_t i : chains[chain]) {
            if (StopSignalsNoted::noted() != 0)
                return;
            const Task& task = work.tasks[i];
            record.finished(
                i, task,
                resultOf(shownPath(task.record.source), task.record.bytes, [&](ConvertResult& result) {
                    run.convert(task.record, log.find(task.position), result);
                }));
        }
    });
    return record.hasNews();
}

void runShard(const RunRequest& request, const std::string& plan, Shard shard, const RootFolder& root) {
    const Work work = workIn(plan, shard); // before stop signals are noted, since a pipe may keep it waiting
    const PlannedTreatment planned = treatmentFromText(work.header.treatment, plan);
    if (planned.recipes.size() != work.header.resultsPerFile)
        throw CommandError("the plan " + plan + " is damaged: its options make another number of results");
    const StopSignalsNoted untilTheEnd;
    ShardLog log(request.log ? typedWord(*request.log) : defaultLog(plan, shard), work.plan, shard,
                 request.waits ? WhenBusy::waits : WhenBusy::fails);
    ConvertReport report(request.style);
    report.expect(work.tasks.size(), work.bytes, true);
    const bool hasNews = convertTasks(request, work, planned, root, log, report);
    report.end();
    const ConvertEnding ending{true, 0};
    if (hasNews)
        (void)log.add(totalsOf(report, ending));
    else if (!request.style.isJSON && request.style.detail != ConvertDetail::none
             && StopSignalsNoted::noted() == 0)
        printError("shard " + request.shard
                   + (work.tasks.empty() ? " has no files" : " was done already, nothing to convert"));
    finish(report, ending);
}

/// The names of a shard, each with a zero byte at its end, for programs that copy files.
void printNames(const Work& work, bool ofResults) {
    for (const Task& task : work.tasks)
        for (const std::string& name :
             ofResults ? task.record.results : std::vector<std::string>{task.record.source})
            if (!name.empty())
                std::cout << name << '\0';
}

void run(const RunRequest& request) {
    const std::string plan = typedWord(request.plan);
    const Shard shard = *shardIn(request.shard);
    if (request.list)
        return printNames(workIn(plan, shard), *request.list == "results");
    if (specialFileExists(plan) && !(request.log && request.root))
        throw CommandError("the plan " + shownPath(plan)
                               + " is not a regular file, so --log and --root have no default; give both",
                           2);
    const RootFolder root(request.root ? typedWord(*request.root) : folderOf(plan));
    runShard(request, plan, shard, root);
}

CLI::Validator shardWord() {
    return CLI::Validator(
        [](const std::string& word) -> std::string {
            return shardIn(word) ? "" : "must be I/N, such as 3/16, with I from 1 to N";
        },
        "");
}

} // namespace

void addRunCommand(CLI::App& program) {
    CLI::App* command = program.add_subcommand(
        "run", "Carry out a plan of 'plan', or one part of it; continues where an earlier run ended");
    auto request = std::make_shared<RunRequest>();
    command
        ->add_option(
            "--shard", request->shard,
            "Convert only the I-th of N parts; all N together make what one run makes (default: 1/1, "
            "which is everything)")
        ->check(shardWord())
        ->option_text("I/N");
    command
        ->add_option("--root", request->root,
                     "Folder that holds the files and results of the plan (default: the folder of the plan)")
        ->check(nonEmpty())
        ->option_text("FOLDER");
    command
        ->add_option("--log", request->log,
                     "File to which the run adds what it has done, and by which the next run continues "
                     "(default: PLAN.I-of-N.jsonl)")
        ->check(nonEmpty())
        ->option_text("FILE");
    command->add_flag("!--no-wait", request->waits,
                      "Fail while another run uses the same log (default: wait for it)");
    command
        ->add_option("--list", request->list,
                     "Convert nothing; print the names of the sources or results, each with a zero byte at "
                     "its end")
        ->check(CLI::Validator(
            [](const std::string& word) -> std::string {
                return word == "sources" || word == "results" ? "" : "must be sources or results";
            },
            ""))
        ->option_text("sources|results");
    request->style.addTo(*command);
    request->resources.addTo(*command);
    command->add_option("PLAN", request->plan, "The plan")->required()->check(nonEmpty());
    command->callback([request] { run(*request); });
}

} // namespace kestrine
