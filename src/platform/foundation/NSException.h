// NSException: the exception for programming errors. Its name and reason are those of the platform.
#pragma once

#include <stdexcept>
#include <string>

namespace kestrine {

class NSException : public std::runtime_error {
public:
    NSException(std::string name, const std::string& reason)
        : std::runtime_error(reason), name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    std::string reason() const { return what(); }

private:
    std::string name_;
};

inline constexpr const char* NSRangeException = "NSRangeException";
inline constexpr const char* NSInvalidArgumentException = "NSInvalidArgumentException";

} // namespace kestrine
