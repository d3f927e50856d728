// What the tests of the Finder share: two folders on one file system or on two, and looking into them.
#pragma once

#include "platform/finder/Finder.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <memory>
#include <string>
#include <vector>

namespace kestrine::testing {

/// The names in a folder in order, hidden ones included; none when there is no such folder.
std::vector<std::string> namesIn(const std::string& folder);

/// The number of the outcome; 0 when all was done.
std::int32_t numberOf(const FinderOutcome& outcome);

/// Whether `folder` lies on another device than the temporary folder.
bool isOnAnotherDevice(const std::string& folder);

/// A folder with items and a folder to bring them to.
class FinderTest : public ::testing::Test {
protected:
    /// Everything lies in a folder of the test, by its real path.
    const TemporaryFolder folder_{std::filesystem::canonical(std::filesystem::temp_directory_path())};
    const std::string from_ = makeFolder(folder_.path() / "from");
    std::string to_ = makeFolder(folder_.path() / "to");

    static std::string makeFolder(const std::filesystem::path& path);
    /// Makes an item in one of the folders and answers its path.
    static std::string write(const std::string& path, const std::string& content = "content");
    /// Opens the folders to every user, for steps without the rights of root.
    void openToAll() const;
};

} // namespace kestrine::testing
