// CommandError: ends a command with one line for the person who gave it.
#pragma once

#include <stdexcept>

namespace kestrine {

/// The text says what is wrong and what to do; the program's name is put before it. Exit status 1.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace kestrine
