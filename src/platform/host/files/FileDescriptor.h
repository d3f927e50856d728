// FileDescriptor: owns one open descriptor of the system.
#pragma once

#include "platform/host/Result.h"

#include <string>

namespace kestrine {

/// Move-only; closes on destruction. A default one holds nothing.
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

    /// Closes now and tells what the system said about writes that were still under way.
    Result<void> close();

private:
    int number_ = -1;
};

/// Opens a regular file for reading without ever blocking: pipes, devices and folders are refused.
Result<FileDescriptor> openForReading(const std::string& path);

/// The failure that the current errno stands for; `what` begins the sentence ("cannot open a.jpg").
Failure systemFailure(const std::string& what);
Failure systemFailure(const std::string& what, int errorNumber);

} // namespace kestrine
