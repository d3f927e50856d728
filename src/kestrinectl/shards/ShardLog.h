// ShardLog: what the runs of a plan have done, a JSON object per line, so that later runs continue where they
// ended. share/kestrine/shard-log.schema.json describes it.
#pragma once

#include "kestrinectl/CommandError.h"
#include "kestrinectl/LockedLog.h"
#include "kestrinectl/convert/ConvertResult.h"
#include "kestrinectl/shards/RootFolder.h"
#include "kestrinectl/shards/Shard.h"

#include <nlohmann/json.hpp>
#include <string>
#include <unordered_map>
#include <vector>

namespace kestrine {

/// A result that a log names.
struct LoggedResult {
    std::string path; ///< below the root
    std::uint64_t bytes = 0;
    MadeContent content;
};

/// Whether the file of a result is there and has the logged content. Its length and time are enough, if they
/// agree; else its content is read.
bool isInPlace(const LoggedResult& result, const RootFolder& root);

/// What a log says about a file of a plan.
struct LoggedFile {
    std::uint64_t record = 0; ///< the file is this one of the plan, from 0
    std::string source;
    bool isDone = false; ///< else it failed
    std::string reason;  ///< why it failed
    std::vector<LoggedResult> results;
};

/// What a line of a log says.
struct LogLine {
    std::optional<std::uint64_t> plan; ///< in the first line of a run: the digest of its plan
    std::optional<LoggedFile> file;
    bool isOfOtherVersion = false; ///< the first line of a log that this program does not understand
};

/// Empty for a line that is not an object of a log, such as one that was cut off when a process was killed.
LogLine readLogLine(const std::string& line);

/// The error for a log whose first line `isOfOtherVersion`.
CommandError logOfOtherVersion(const std::string& path);

/// The object of a file in a log: that of `convert --json` and the position of its record.
nlohmann::ordered_json toJSON(const ConvertResult& result, std::uint64_t record);

/// The log to which a run adds. Calls may come from one thread at a time.
class ShardLog {
public:
    /// Opens or creates the log. Throws CommandError if it cannot be written, is in use, or belongs to
    /// another plan.
    ShardLog(const std::string& path, std::uint64_t plan, Shard shard, WhenBusy whenBusy);

    /// What the log said about a file when it was opened; null if nothing.
    const LoggedFile* find(std::uint64_t record) const;

    Result<void> add(const nlohmann::ordered_json& line);

private:
    void read(const std::string& line, std::uint64_t plan);

    LineLog log_;
    bool hasPlan_ = false;
    std::unordered_map<std::uint64_t, LoggedFile> files_;
};

} // namespace kestrine
