// CommandError: ends a command with a one-line message for the user.
#pragma once

#include <stdexcept>
#include <string>

namespace kestrine {

/// The message states what is wrong and what to do, without the program's name.
class CommandError : public std::runtime_error {
public:
    explicit CommandError(const std::string& text, int status = 1)
        : std::runtime_error(text), status_(status) {}

    /// The exit status.
    int status() const { return status_; }

private:
    int status_;
};

} // namespace kestrine
