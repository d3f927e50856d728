// CapturedRun: runs a program to its end and returns its output, such as the answer of a dialogue.
#pragma once

#include "platform/host/process/ChildProcess.h"

#include <map>

namespace kestrine {

/// The output of a program and how it ended.
struct CapturedRun {
    std::string output;
    ChildEnd end;
};

/// Variables that are added to our environment for a program, or replace its values.
using EnvironmentChanges = std::map<std::string, std::string>;

/// Runs a program (a name without a slash is looked up in PATH) and blocks until it has ended and its
/// standard output is closed. Its standard input is empty, its standard error is discarded, and it
/// inherits no other descriptor. The program is ended (SIGTERM) when it writes more than `limit` bytes, which
/// is the failure tooLarge, and when this process ends in any way. Works with any handling of SIGCHLD in this
/// process. Any thread.
Result<CapturedRun> runCapturingOutput(const std::string& program, const std::vector<std::string>& arguments,
                                       std::size_t limit, const EnvironmentChanges& changes = {});

} // namespace kestrine
