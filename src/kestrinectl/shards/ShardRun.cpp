#include "kestrinectl/shards/ShardRun.h"

#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertOutcome.h"
#include "kestrinectl/text/ShownPath.h"
#include "platform/host/files/FileMark.h"

#include <algorithm>

namespace kestrine {

namespace {

/// Some tools and file systems keep only whole seconds.
bool isSameTime(std::int64_t planned, std::int64_t there) {
    constexpr std::int64_t second = 1'000'000'000;
    return there == planned || (there % second == 0 && there == planned - planned % second);
}

/// Notes the contents of the results of one job.
class Contents final : public ChangeRecorder {
public:
    Result<void> record(const IntendedResult& result) override {
        digests_[result.path] = result.content.number;
        return {};
    }

    /// The content of a result that was published, or was there already; nullopt if there is none.
    std::optional<MadeContent> contentAt(const std::string& path) const {
        const Result<FileMark> mark = markOfFile(path);
        const auto digest = digests_.find(path);
        if (!mark || digest == digests_.end())
            return std::nullopt;
        return MadeContent{digest->second, mark->modified};
    }

private:
    std::unordered_map<std::string, std::uint64_t> digests_; ///< by path
};

const LoggedResult* resultAt(const LoggedFile* logged, const std::string& path) {
    if (logged == nullptr)
        return nullptr;
    const auto found = std::ranges::find(logged->results, path, &LoggedResult::path);
    return found == logged->results.end() ? nullptr : &*found;
}

} // namespace

void ShardRun::convert(const PlanRecord& record, const LoggedFile* logged, ConvertResult& result) const {
    if (!isUsable(record, result))
        return;
    if (isDone(record, logged)) {
        result.status = ConvertStatus::skipped;
        result.reason = "it is done already";
        result.isUpToDate = true;
        return;
    }
    Contents contents;
    ResizeJob job = jobFor(record);
    job.recorder = &contents;
    std::vector<JobOutcome> outcomes = runJob(job);
    bool hasNews = false;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        JobOutcome& outcome = outcomes[i];
        const LoggedResult* older = acceptOlder(resultAt(logged, record.results[i]), outcome);
        hasNews = hasNews || (outcome.isWritten && !outcome.wasThere);
        const std::size_t outputs = result.outputs.size();
        addOutcome(result, {record.source, job.path.utf8(), std::nullopt, record.bytes}, job.recipes[i],
                   outcome);
        if (result.outputs.size() == outputs)
            continue;
        ConvertOutput& output = result.outputs.back();
        output.content = older != nullptr ? older->content : contents.contentAt(output.path);
        output.path = record.results[i];
    }
    if (result.status == ConvertStatus::done && !hasNews) {
        result.status = ConvertStatus::skipped;
        result.reason = "its results exist already";
    }
}

/// The logged result if another version of the program made it, so that this run could not take its place.
/// Then `outcome` becomes that of a result that was there.
const LoggedResult* ShardRun::acceptOlder(const LoggedResult* logged, JobOutcome& outcome) const {
    const bool isTaken = outcome.failure && outcome.failure->reason == Reason::alreadyExists;
    if (!isTaken || logged == nullptr || !isInPlace(*logged, root_))
        return nullptr;
    outcome.failure.reset();
    outcome.isWritten = outcome.wasThere = true;
    outcome.bytes = logged->bytes;
    return logged;
}

/// Whether the source is the planned one, and nothing leads out of the root. Else `result` says why.
bool ShardRun::isUsable(const PlanRecord& record, ConvertResult& result) const {
    const auto leavesRoot = [this](const std::string& path) { return !path.empty() && !root_.holds(path); };
    if (leavesRoot(record.source) || std::ranges::any_of(record.results, leavesRoot)) {
        result.complain("a link in a folder leads out of the root", kindOf(Reason::refused));
        return false;
    }
    const std::string path = root_.absolute(record.source);
    const Result<FileMark> mark = markOfFile(path);
    if (!mark)
        result.complain(withoutPath(mark.failure().text, path), kindOf(mark.failure().reason));
    else if (mark->bytes != record.bytes || !isSameTime(record.modified, mark->modified))
        result.complain("it was changed since the plan was made; make a new plan", "changed");
    return result.complaints.empty();
}

/// Whether the log says so and all results are still as it says.
bool ShardRun::isDone(const PlanRecord& record, const LoggedFile* logged) const {
    return logged != nullptr && logged->isDone
           && std::ranges::all_of(logged->results, [&](const LoggedResult& result) {
                  return std::ranges::find(record.results, result.path) != record.results.end()
                         && isInPlace(result, root_);
              });
}

ResizeJob ShardRun::jobFor(const PlanRecord& record) const {
    ResizeJob job{.path = NSString::fromUTF8(root_.absolute(record.source)),
                  .recipes = planned_.recipes,
                  .policy = planned_.treatment.policy()};
    job.saveFolderPath = job.path.deletingLastPathComponent();
    for (const std::string& result : record.results)
        job.fixedPaths.push_back(result.empty() ? NSString() : NSString::fromUTF8(root_.absolute(result)));
    return job;
}

} // namespace kestrine
