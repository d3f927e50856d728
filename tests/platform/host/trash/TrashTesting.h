// What the tests of the trash share: a home folder of their own, and looking into a trash.
#pragma once

#include "platform/host/trash/Trash.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <string>
#include <vector>

namespace kestrine::testing {

/// The names in a folder, in no order; none when there is no such folder.
std::vector<std::string> namesInFolder(const std::filesystem::path& folder);

/// Succeeds when nothing is in the trash, neither items nor records nor files under way.
::testing::AssertionResult isEmptyTrash(const std::string& trash);

/// The path that the record of an item tells, decoded; "" when the record is not of the standard's form.
std::string recordedPath(const TrashedItem& item);

class TrashTest : public ::testing::Test {
protected:
    /// Everything lies in folders of the test, by their real paths.
    const TemporaryFolder folder_{std::filesystem::canonical(std::filesystem::temp_directory_path())};
    const std::string home_ = makeFolderOpenToAll("home");
    const std::string work_ = makeFolderOpenToAll("work");
    const std::string trash_ = home_ + "/.local/share/Trash";
    const Environment environment_{{"HOME", home_}};

    std::string makeFolderOpenToAll(const std::string& name) const;
    Result<TrashedItem> trash(const std::string& path) const { return moveToTrash(path, environment_); }
};

} // namespace kestrine::testing
