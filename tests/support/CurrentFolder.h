// Makes a folder the current one of the process for as long as it lives; afterwards the one before is again.
#pragma once

#include <filesystem>

namespace kestrine::testing {

class CurrentFolder {
public:
    explicit CurrentFolder(const std::filesystem::path& folder) : before_(std::filesystem::current_path()) {
        std::filesystem::current_path(folder);
    }
    ~CurrentFolder() { std::filesystem::current_path(before_); }
    CurrentFolder(const CurrentFolder&) = delete;
    CurrentFolder& operator=(const CurrentFolder&) = delete;

private:
    const std::filesystem::path before_;
};

} // namespace kestrine::testing
