// Shared by the tests of the trash: a temporary home folder, and functions that examine a trash.
#pragma once

#include "platform/host/trash/Trash.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

namespace kestrine::testing {

/// The names in a folder, in no particular order; none if there is no such folder.
std::vector<std::string> namesInFolder(const std::filesystem::path& folder);

/// Succeeds if the trash contains no items, no records and no temporary files.
::testing::AssertionResult isEmptyTrash(const std::string& trash);

/// The decoded path in the record of an item; "" if the record does not have the standard form.
std::string recordedPath(const TrashedItem& item);

class TrashTest : public ::testing::Test {
protected:
    // All folders are in the temporary folder. Their paths are canonical.
    const TemporaryFolder folder_{std::filesystem::canonical(std::filesystem::temp_directory_path())};
    const std::string home_ = makeFolderOpenToAll("home");
    const std::string work_ = makeFolderOpenToAll("work");
    const std::string trash_ = home_ + "/.local/share/Trash";
    const Environment environment_{{"HOME", home_}};

    std::string makeFolderOpenToAll(const std::string& name) const;
    Result<TrashedItem> trash(const std::string& path) const { return moveToTrash(path, environment_); }
};

} // namespace kestrine::testing
