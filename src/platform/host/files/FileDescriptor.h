// FileDescriptor: owns an open file descriptor.
#pragma once

#include "platform/host/Result.h"

#include <string>

namespace kestrine {

/// Move-only. The destructor closes the descriptor. A default-constructed object holds none.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor() { (void)close(); }

    bool isOpen() const { return number_ >= 0; }
    int number() const { return number_; }

    /// Closes the descriptor. Fails if the system reports an error of earlier writes.
    Result<void> close();

private:
    int number_ = -1;
};

/// Opens a regular file for reading. Fails with notRegularFile for pipes, devices and folders, without
/// blocking.
Result<FileDescriptor> openForReading(const std::string& path);

/// The failure for an error number, by default the current errno. `what` starts the message ("cannot open
/// a.jpg").
Failure systemFailure(const std::string& what);
Failure systemFailure(const std::string& what, int errorNumber);

} // namespace kestrine
