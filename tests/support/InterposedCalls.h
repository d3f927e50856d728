// InterposedCalls: watches the calls that sync, name and remove files, and makes one fail at a chosen moment.
// In a test program that uses it, the functions in InterposedCalls.cpp replace those of the C library.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace kestrine::testing {

/// Watches the calls of this process, on all threads, during its lifetime. One object at a time.
class InterposedCalls {
public:
    InterposedCalls();
    ~InterposedCalls();
    InterposedCalls(const InterposedCalls&) = delete;
    InterposedCalls& operator=(const InterposedCalls&) = delete;

    /// Called before each fsync and rename, on the thread that makes the call. The call fails with the
    /// error number returned; 0 lets it be made. Null functions let all be made.
    std::function<int(int file)> onSync;
    std::function<int(const std::string& oldName, const std::string& newName)> onRename;

    /// The successful calls so far:
    ///   "sync 3 bytes"     a file with that much content was synced
    ///   "sync /a"          a folder was synced
    ///   "name b.jpg"       a link or rename made the name
    ///   "hide b.jpg"       it got a hidden temporary name
    ///   "remove b.jpg"     the name was removed
    /// Hidden temporary names are left out of "remove".
    std::vector<std::string> made() const;

    /// Adds a successful call. Any thread.
    void record(const std::string& call);

private:
    mutable std::mutex mutex_;
    std::vector<std::string> made_; // guarded by the mutex
};

} // namespace kestrine::testing
