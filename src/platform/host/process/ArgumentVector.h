// ArgumentVector: a program and its arguments, or variables, in the form of the system calls.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <vector>

namespace kestrine {

/// Move-only, so that the pointers stay valid.
class ArgumentVector {
public:
    /// The vector `program`, `arguments`. malformed when a string is not a path or contains a zero byte.
    static Result<ArgumentVector> make(const std::string& program, const std::vector<std::string>& arguments);

    explicit ArgumentVector(std::vector<std::string> strings);
    ArgumentVector(ArgumentVector&&) = default;

    /// Ends with a null pointer.
    char* const* get() const { return pointers_.data(); }

private:
    std::vector<std::string> strings_;
    std::vector<char*> pointers_;
};

} // namespace kestrine
