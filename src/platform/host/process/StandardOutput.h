// StandardOutput: the bytes that a program says. A reader who went away is no reason to stop working.
#pragma once

#include <string_view>

namespace kestrine {

/// Unbuffered: what was written has left the process. After the first failure everything further is
/// dropped, so that a text never goes on behind a gap.
class StandardOutput {
public:
    /// The descriptor (standard output unless a test says otherwise) is not owned.
    explicit StandardOutput(int descriptor = 1) : descriptor_(descriptor) {}

    /// Writes all bytes, zero bytes included; waits for a reader that is slow.
    void write(std::string_view text);

    /// Whether something could not be written.
    bool failed() const { return failed_; }

private:
    int descriptor_;
    bool failed_ = false;
};

} // namespace kestrine
