// Sets the time zone of the process during its lifetime, and restores the previous one afterwards.
#pragma once

#include <cstdlib>
#include <ctime>
#include <optional>
#include <string>

namespace kestrine::testing {

class LocalZone {
public:
    explicit LocalZone(const char* name) {
        if (const char* before = std::getenv("TZ"))
            before_ = before;
        ::setenv("TZ", name, 1);
        ::tzset();
    }
    ~LocalZone() {
        if (before_)
            ::setenv("TZ", before_->c_str(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }
    LocalZone(const LocalZone&) = delete;
    LocalZone& operator=(const LocalZone&) = delete;

private:
    std::optional<std::string> before_;
};

} // namespace kestrine::testing
