// CapturedRun: a program run to its end for what it writes, such as a dialogue that prints the answer.
#pragma once

#include "platform/host/process/ChildProcess.h"

#include <map>

namespace kestrine {

/// What a program wrote and how it ended.
struct CapturedRun {
    std::string output;
    ChildEnd end;
};

/// Variables that a program gets in addition to our environment, or instead of its values.
using EnvironmentChanges = std::map<std::string, std::string>;

/// Runs a program (a name without a slash is looked up in PATH) and blocks until it has ended and its
/// standard output is closed. The program has nothing to read, its standard error is dropped, and it gets no
/// other descriptor of ours. It is ended (SIGTERM) when it writes more than `limit` bytes, which is the
/// failure tooLarge, and when this process ends in whatever way. How this process treats SIGCHLD does not
/// matter. Any thread.
Result<CapturedRun> runCapturingOutput(const std::string& program, const std::vector<std::string>& arguments,
                                       std::size_t limit, const EnvironmentChanges& changes = {});

} // namespace kestrine
