// CommandError: ends a command with one line for the person who typed it.
#pragma once

#include <stdexcept>

namespace kestrine {

/// The message says what is wrong and what to do, without the program's name. Exit status 1.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace kestrine
