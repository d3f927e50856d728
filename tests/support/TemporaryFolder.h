// TemporaryFolder: an empty folder for one test, removed with its content when the test ends.
#pragma once

#include "platform/host/Bytes.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kestrine::testing {

class TemporaryFolder {
public:
    /// Makes a folder in `parent`, by default in the system's temporary folder.
    explicit TemporaryFolder(const std::filesystem::path& parent = {});
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// The path of `name` in this folder.
    std::string operator/(std::string_view name) const { return (path_ / name).string(); }

    /// Creates the file `name`, with its folders and the given content. Returns its path.
    std::string write(std::string_view name, std::string_view content) const;
    std::string write(std::string_view name, ByteView content) const;

private:
    std::filesystem::path path_;
};

/// The content of a file; empty if it cannot be read.
std::string readFile(const std::filesystem::path& path);
Bytes readFileBytes(const std::filesystem::path& path);
Bytes bytesOf(std::string_view text);

} // namespace kestrine::testing
