// Changes the current folder of the process during its lifetime, and restores the previous one afterwards.
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
