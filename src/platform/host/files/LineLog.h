// LineLog: a file of lines, to which one process at a time appends. After a crash all complete lines are
// there.
#pragma once

#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileDescriptor.h"

#include <functional>
#include <string>
#include <vector>

namespace kestrine {

/// Move-only. Holds the lock until it is destroyed or the process ends. Calls of one object may come from one
/// thread at a time.
class LineLog {
public:
    /// Opens the file and locks it; a missing file is created with the mode 0600. While another process has
    /// the lock, it waits if `mayWait` returns true, and else fails with alreadyExists. `mayWait` is called
    /// at most once. A stop signal that StopSignalsNoted has noted ends the wait: refused.
    static Result<LineLog> open(const std::string& path, const std::function<bool()>& mayWait);

    /// Creates the file, which must not exist (alreadyExists), and locks it. The name is synced.
    static Result<LineLog> create(const std::string& path);

    /// The complete lines, in order.
    Result<std::vector<std::string>> lines() const;

    /// The same of a file that is only read, without its lock. A missing file has none.
    static Result<std::vector<std::string>> linesOf(const std::string& path);

    /// Writes the first line of a file without complete lines. A file that was cut off within this line is
    /// begun again; fails with malformed if it contains anything else.
    Result<void> begin(const std::string& line);

    /// Adds a line, which must not contain a newline. A failure may leave a part of it, which does not count
    /// as a line and which the next call ends.
    Result<void> append(const std::string& line, Durability durability);

    /// Replaces all lines in one step. Keeps the lock.
    Result<void> rewrite(const std::vector<std::string>& lines);

    const std::string& path() const { return path_; }

private:
    LineLog(std::string path, FileDescriptor file) : path_(std::move(path)), file_(std::move(file)) {}

    std::string path_;
    FileDescriptor file_;
    bool endsInLine_ = false; ///< whether the file is known to end with a newline, or to be empty
};

} // namespace kestrine
