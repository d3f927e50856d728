// Looking on while the code under test calls the system, and making a call fail at a chosen moment.
// Linked into a test program, these stand in place of the C library's fsync and renameat2.
#pragma once

#include <functional>
#include <string>

namespace kestrine::testing {

/// What is asked before each call is made, on the thread that calls; null functions ask nothing. An error
/// number as the answer makes the call fail with it, 0 lets it be made. One object at a time.
struct InterposedCalls {
    std::function<int(int file)> onSync;
    std::function<int(const std::string& oldName, const std::string& newName)> onRename;

    InterposedCalls();
    ~InterposedCalls();
    InterposedCalls(const InterposedCalls&) = delete;
    InterposedCalls& operator=(const InterposedCalls&) = delete;
};

} // namespace kestrine::testing
