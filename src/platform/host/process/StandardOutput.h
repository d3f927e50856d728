// StandardOutput: writes to standard output. If the reader has closed it, the program continues.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <unistd.h>

namespace kestrine {

/// Unbuffered: each write reaches the system at once. After the first failure all further output is dropped,
/// so that the output never has a gap in the middle. For one thread at a time.
class StandardOutput {
public:
    /// `descriptor` must stay open while this object is in use; it is not closed.
    explicit StandardOutput(int descriptor = STDOUT_FILENO) : descriptor_(descriptor) {}

    /// Writes all bytes, zero bytes included. Waits for a slow reader.
    void write(std::string_view text);

    /// Whether a write has failed.
    bool failed() const { return failed_; }

private:
    int descriptor_;
    bool failed_ = false;
};

/// Collects short pieces, so that a line reaches the system in one write unless it is long. Allocates no
/// memory.
class CollectedOutput {
public:
    explicit CollectedOutput(StandardOutput& output) : output_(output) {}
    ~CollectedOutput() { flush(); }
    CollectedOutput(const CollectedOutput&) = delete;
    CollectedOutput& operator=(const CollectedOutput&) = delete;

    void add(std::string_view bytes);
    /// Writes what was collected.
    void flush();

private:
    StandardOutput& output_;
    std::array<char, 16 * 1024> pieces_;
    std::size_t size_ = 0;
};

} // namespace kestrine
