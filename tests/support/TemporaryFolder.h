// TemporaryFolder: a fresh folder for one test, removed with everything in it when the test ends.
#pragma once

#include "platform/host/Bytes.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace kestrine::testing {

class TemporaryFolder {
public:
    /// Below `parent`, or below the system's temporary folder when that is empty.
    explicit TemporaryFolder(const std::filesystem::path& parent = {});
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }
    /// The path of `name` inside, as text.
    std::string operator/(std::string_view name) const { return (path_ / name).string(); }

    /// Makes `name` (and its folders) with the given content and returns its path.
    std::string write(std::string_view name, std::string_view content) const;
    std::string write(std::string_view name, ByteView content) const;

private:
    std::filesystem::path path_;
};

/// The whole content of a file; empty when it cannot be read.
std::string readFile(const std::filesystem::path& path);
Bytes readFileBytes(const std::filesystem::path& path);
Bytes bytesOf(std::string_view text);

} // namespace kestrine::testing
