// The state of a thread as the system sees it, for tests that wait until it sleeps or works.
#pragma once

#include <fstream>
#include <string>
#include <sys/types.h>
#include <unistd.h>

namespace kestrine::testing {

/// A letter of proc(5): 'R' for running, 'S' for sleeping, 'D' for waiting for a disk; '?' if there is no
/// such thread. The first thread of a process has its number.
inline char stateOfTask(pid_t process, pid_t thread) {
    std::ifstream file("/proc/" + std::to_string(process) + "/task/" + std::to_string(thread) + "/stat");
    const std::string line((std::istreambuf_iterator<char>(file)), {});
    const auto nameEnd = line.rfind(')');
    return nameEnd == std::string::npos || nameEnd + 2 >= line.size() ? '?' : line[nameEnd + 2];
}

/// Returns when the thread has this state, or after a minute. Returns whether it has it.
inline bool comesToState(char state, pid_t process, pid_t thread) {
    for (int attempt = 0; attempt < 60'000; ++attempt, ::usleep(1000))
        if (stateOfTask(process, thread) == state)
            return true;
    return false;
}

} // namespace kestrine::testing
