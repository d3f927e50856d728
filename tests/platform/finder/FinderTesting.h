// Shared by the tests of the Finder: a source and a destination folder, and functions to examine them.
#pragma once

#include "platform/finder/Finder.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

namespace kestrine::testing {

/// The sorted names in a folder, including hidden ones; empty when there is no such folder.
std::vector<std::string> namesIn(const std::string& folder);

/// The error number of the outcome; 0 for success.
std::int32_t numberOf(const FinderOutcome& outcome);

/// Whether `folder` is on another device than the temporary folder.
bool isOnAnotherDevice(const std::string& folder);

/// A source and a destination folder.
class FinderTest : public ::testing::Test {
protected:
    /// The temporary folder by its real path.
    const TemporaryFolder folder_{std::filesystem::canonical(std::filesystem::temp_directory_path())};
    const std::string from_ = makeFolder(folder_.path() / "from");
    std::string to_ = makeFolder(folder_.path() / "to");

    static std::string makeFolder(const std::filesystem::path& path);
    /// Makes a file and returns its path.
    static std::string write(const std::string& path, const std::string& content = "content");
    /// Gives every user access to the folders, for steps without the rights of root.
    void openToAll() const;
};

} // namespace kestrine::testing
