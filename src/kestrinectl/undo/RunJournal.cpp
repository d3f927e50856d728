#include "kestrinectl/undo/RunJournal.h"

#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/StateFolder.h"
#include "kestrinectl/text/JSONText.h"
#include "platform/foundation/LocalTime.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/FileTimes.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <map>

namespace kestrine {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr int journalVersion = 1;
constexpr std::size_t runsKept = 100;
constexpr std::chrono::hours timeKept{30 * 24};
constexpr const char* journalFolder = "journal";
constexpr const char* journalEnding = ".jsonl";

std::string pathOfRun(std::size_t number) {
    return joinedPath(stateFolder(journalFolder), std::to_string(number) + journalEnding);
}

std::optional<std::size_t> numberOfRun(const std::string& name) {
    std::size_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool isRun = error == std::errc() && number > 0
                       && end == name.data() + name.size() - std::string_view(journalEnding).size()
                       && name.ends_with(journalEnding);
    return isRun ? std::optional(number) : std::nullopt;
}

std::string now() {
    return isoText(std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now()));
}

/// Errors are ignored; a later run tries again.
void removeOldRuns(const std::vector<std::size_t>& numbers) {
    const FileTime oldest = std::chrono::system_clock::now() - timeKept;
    for (std::size_t i = 0; i + runsKept < numbers.size(); ++i)
        if (const auto written = modificationTime(pathOfRun(numbers[i])); written && *written < oldest)
            (void)removeFile(pathOfRun(numbers[i]));
}

/// An empty journal with the next free number.
Result<LineLog> createJournal(std::size_t& number) {
    TRY(makePrivateFolders(stateFolder(journalFolder)));
    const std::vector<std::size_t> numbers = recordedRuns();
    removeOldRuns(numbers);
    for (number = numbers.empty() ? 1 : numbers.back() + 1;; ++number) {
        Result<LineLog> log = LineLog::create(pathOfRun(number));
        if (log || log.failure().reason != Reason::alreadyExists)
            return log;
    }
}

LineLog newJournal(std::size_t& number) {
    Result<LineLog> log = createJournal(number);
    const Result<void> written =
        log ? log->append(ordered_json{{"journal", journalVersion}, {"began", now()}}.dump(),
                          Durability::synced)
            : log.failure();
    if (!written)
        throw CommandError("the journal for undo cannot be written (" + written.failure().text
                           + "); nothing was converted; --no-journal goes on without");
    return *std::move(log);
}

ordered_json toJSON(const ReplacedFile& file) {
    return {{"original", textToJSON(file.original)},
            {"device", file.mark.device},
            {"inode", file.mark.inode},
            {"bytes", file.mark.bytes},
            {"modified", file.mark.modified},
            {"result", textToJSON(file.result)},
            {"hidden", textToJSON(file.hidden)},
            {"resultBytes", file.content.bytes},
            {"resultDigest", file.content.number}};
}

/// Throws json::exception for anything that toJSON() does not return.
ReplacedFile replacedFile(const json& object) {
    const auto text = [&](const char* key) { return textIn(object.at(key)); };
    return {.original = text("original"),
            .mark = {object.at("device"), object.at("inode"), object.at("bytes"), object.at("modified")},
            .result = text("result"),
            .hidden = text("hidden"),
            .content = {object.at("resultBytes"), object.at("resultDigest")},
            .broughtBackAs = "",
            .isReplaced = false};
}

/// Reads the lines of a journal. Ignores damaged lines.
class JournalReader {
public:
    explicit JournalReader(std::size_t number) { run_.number = number; }

    void read(const std::string& line) {
        try {
            take(json::parse(line));
        } catch (const json::exception&) { // a damaged line
            return;
        }
    }

    const std::optional<int>& version() const { return version_; }
    RecordedRun run() && {
        std::erase_if(run_.files, [](const ReplacedFile& file) { return file.original.empty(); });
        return std::move(run_);
    }

private:
    void take(const json& line) {
        if (line.contains("journal")) {
            version_ = line.at("journal").get<int>();
            run_.began = line.at("began").get<std::string>();
        } else if (line.contains("replace")) {
            add(replacedFile(line.at("replace")));
        } else if (line.contains("bringBack")) {
            if (ReplacedFile* file = fileAt(line.at("bringBack")))
                file->broughtBackAs = textIn(line.at("as"));
        } else if (line.contains("replaced")) {
            if (ReplacedFile* file = fileAt(line.at("replaced")))
                file->isReplaced = true;
        } else if (line.contains("notReplaced")) {
            withdraw(textIn(line.at("notReplaced")));
        } else {
            run_.isUndone = run_.isUndone || line.contains("undone");
        }
    }

    /// A second line about a file corrects the first.
    void add(ReplacedFile file) {
        const auto [place, isNew] = positions_.try_emplace(file.original, run_.files.size());
        if (isNew)
            run_.files.push_back(std::move(file));
        else
            run_.files[place->second] = std::move(file);
    }

    /// The file whose original has this path; null if there is none.
    ReplacedFile* fileAt(const json& original) {
        const auto found = positions_.find(textIn(original));
        return found == positions_.end() ? nullptr : &run_.files[found->second];
    }

    void withdraw(const std::string& original) {
        const auto found = positions_.find(original);
        if (found == positions_.end())
            return;
        run_.files[found->second].original.clear();
        positions_.erase(found);
    }

    RecordedRun run_;
    std::optional<int> version_;
    std::map<std::string, std::size_t> positions_; ///< of the files, by original
};

RecordedRun read(const LineLog& log, std::size_t number) {
    const Result<std::vector<std::string>> lines = log.lines();
    if (!lines)
        throw CommandError(lines.failure().text);
    JournalReader reader(number);
    for (const std::string& line : *lines)
        reader.read(line);
    if (reader.version().value_or(journalVersion) > journalVersion)
        throw CommandError("the journal of run " + std::to_string(number)
                           + " is from a newer version of kestrinectl; use that version");
    return std::move(reader).run();
}

LineLog openJournal(std::size_t number) {
    const std::string path = pathOfRun(number);
    if (!itemExists(path))
        throw CommandError("there is no run " + std::to_string(number)
                           + "; 'kestrinectl history' lists all runs");
    Result<LineLog> log = LineLog::open(path, [] { return false; });
    if (!log && log.failure().reason == Reason::alreadyExists)
        throw CommandError("run " + std::to_string(number) + " is still at work");
    if (!log)
        throw CommandError(log.failure().text);
    return *std::move(log);
}

} // namespace

RunJournal::RunJournal() : log_(newJournal(number_)) {}

RunJournal::~RunJournal() {
    if (isEmpty())
        (void)removeFile(log_->path());
}

Result<void> RunJournal::record(const IntendedResult& result) {
    if (!result.replacesSource)
        return {};
    const std::string original = placeOf(result.source);
    const FileMark mark = TRY(markOfItem(original));
    const ReplacedFile file{original, mark, placeOf(result.path), placeOf(result.hiddenPath), result.content,
                            "",       false};
    const std::lock_guard lock(mutex_);
    count_ += result.isCorrection ? 0 : 1;
    return log_->append(ordered_json{{"replace", toJSON(file)}}.dump(), Durability::synced);
}

/// Without this line, which may be lost, undo finds out where the original is.
void RunJournal::ended(const IntendedResult& result, bool isReplaced) {
    const std::string original = placeOf(result.source);
    const std::lock_guard lock(mutex_);
    count_ -= isReplaced ? 0 : 1;
    (void)log_->append(ordered_json{{isReplaced ? "replaced" : "notReplaced", textToJSON(original)}}.dump(),
                       Durability::cached);
}

std::vector<std::size_t> recordedRuns() {
    std::vector<std::size_t> numbers;
    const Result<FileDescriptor> folder = openFolder(stateFolder(journalFolder));
    const Result<std::vector<std::string>> names =
        folder ? namesIn(folder->number()) : Result<std::vector<std::string>>(folder.failure());
    if (!names)
        return numbers;
    for (const std::string& name : *names)
        if (const auto number = numberOfRun(name))
            numbers.push_back(*number);
    std::ranges::sort(numbers);
    return numbers;
}

PastRun::PastRun(std::size_t number) : log_(openJournal(number)), run_(read(log_, number)) {}

Result<void> PastRun::noteNewName(const ReplacedFile& file, const std::string& path) {
    return log_.append(
        ordered_json{{"bringBack", textToJSON(file.original)}, {"as", textToJSON(path)}}.dump(),
        Durability::synced);
}

Result<void> PastRun::noteUndone() {
    return log_.append(ordered_json{{"undone", now()}}.dump(), Durability::synced);
}

std::optional<RecordedRun> summaryOfRun(std::size_t number) {
    const Result<std::vector<std::string>> lines = LineLog::linesOf(pathOfRun(number));
    if (!lines)
        return std::nullopt;
    JournalReader reader(number);
    for (const std::string& line : *lines)
        reader.read(line);
    return std::move(reader).run();
}

} // namespace kestrine
