// SystemCallRecorder: which calls that sync, name or remove files were made, and in which order.
#pragma once

#include <string>
#include <vector>

namespace kestrine::testing {

/// Records the calls of this process, on all threads, during its lifetime. There is one at a time.
class SystemCallRecorder {
public:
    SystemCallRecorder();
    ~SystemCallRecorder();
    SystemCallRecorder(const SystemCallRecorder&) = delete;
    SystemCallRecorder& operator=(const SystemCallRecorder&) = delete;

    /// The successful calls so far:
    ///   "sync 3 bytes"     a file with that much content was synced
    ///   "sync /a"          a folder was synced
    ///   "name b.jpg"       a link or rename made the name
    ///   "remove b.jpg"     the name was removed
    /// Hidden temporary names are left out of "remove".
    std::vector<std::string> calls() const;
};

} // namespace kestrine::testing
