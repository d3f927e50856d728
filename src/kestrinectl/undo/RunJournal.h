// RunJournal: the replaced files of a run, on the disk before anything happens to them, so that the run can
// be undone. A journal is a file of JSON lines in the state folder, one per run.
#pragma once

#include "models/ChangeRecorder.h"
#include "platform/host/files/FileMark.h"
#include "platform/host/files/LineLog.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// A file that was replaced, or that was about to be.
struct ReplacedFile {
    std::string original;      ///< its path; absolute, without links in the folder part
    FileMark mark;             ///< of the original
    std::string result;        ///< the path of the result
    std::string hidden;        ///< of the hidden file that held the result before that
    ContentDigest content;     ///< of the result
    std::string broughtBackAs; ///< where undo was about to put the original; "" for nowhere but its own place
    bool isReplaced = false;   ///< whether the original is known to have gone to the trash
};

/// What a journal says. Files that were not replaced after all are left out.
struct RecordedRun {
    std::size_t number = 0;
    std::string began; ///< in local time
    std::vector<ReplacedFile> files;
    bool isUndone = false;
};

/// Records a replacing run. Any thread.
class RunJournal final : public ChangeRecorder {
public:
    /// Begins a journal with the next number and removes runs that are both old and not among the last ones.
    /// Throws CommandError when it cannot be written.
    RunJournal();
    /// Removes the journal if nothing was replaced.
    ~RunJournal() override;
    RunJournal(const RunJournal&) = delete;
    RunJournal& operator=(const RunJournal&) = delete;

    Result<void> record(const IntendedResult& result) override;
    void ended(const IntendedResult& result, bool isReplaced) override;

    std::size_t number() const { return number_; }
    bool isEmpty() const { return count_ == 0; }

private:
    std::size_t number_ = 0;
    std::mutex mutex_; // guards the members after it
    std::optional<LineLog> log_;
    std::size_t count_ = 0; ///< of files that were replaced, or are about to be
};

/// The numbers of all recorded runs, oldest first.
std::vector<std::size_t> recordedRuns();

/// An open journal of a run that has ended.
class PastRun {
public:
    /// Throws CommandError if there is no such run, if it is still at work, or if its journal is of a newer
    /// version.
    explicit PastRun(std::size_t number);

    const RecordedRun& run() const { return run_; }

    /// Notes that the original is about to get another name than its own.
    Result<void> noteNewName(const ReplacedFile& file, const std::string& path);
    /// Notes that there is nothing left to undo.
    Result<void> noteUndone();

private:
    LineLog log_;
    RecordedRun run_;
};

/// What the journal of a run says, for a list of runs. nullopt if it cannot be read.
std::optional<RecordedRun> summaryOfRun(std::size_t number);

} // namespace kestrine
