// A temporary folder for tests of the Finder, with its own home folder and trash.
#pragma once

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryFolder.h"

namespace kestrine::testing {

class FinderPlace {
public:
    const std::filesystem::path& path() const { return folder_.path(); }
    std::string operator/(std::string_view name) const { return folder_ / name; }
    std::string write(std::string_view name, std::string_view content = "content") const {
        return folder_.write(name, content);
    }
    std::string makeFolder(std::string_view name) const {
        std::filesystem::create_directories(folder_ / name);
        return folder_ / name;
    }
    /// The path of an item in the trash.
    std::string trashed(const std::string& name) const { return folder_ / ("home/data/Trash/files/" + name); }

private:
    const TemporaryFolder folder_{std::filesystem::canonical(std::filesystem::temp_directory_path())};
    const EnvironmentVariable home_{"HOME", makeFolder("home")};
    const EnvironmentVariable data_{"XDG_DATA_HOME", folder_ / "home/data"};
};

} // namespace kestrine::testing
