#include "platform/host/process/DynamicLibrary.h"
#include "platform/host/process/SystemLibraries.h"

#include <gtest/gtest.h>
#include <set>

using namespace kestrine;

TEST(SystemLibraries, eachHasOneRowWithTheNamesThatThisSystemKnows) {
    std::set<OnDemand> seen;
    for (const SystemLibrary& row : systemLibraries()) {
        EXPECT_TRUE(seen.insert(row.library).second) << row.file;
        EXPECT_STREQ(systemLibrary(row.library).file, row.file);
        EXPECT_TRUE(DynamicLibrary::open({row.file}).ok()) << row.file;
        EXPECT_EQ(std::string(row.package).find(".so"), std::string::npos) << row.package;
    }
    EXPECT_EQ(seen.size(), static_cast<std::size_t>(OnDemand::expat) + 1);
    EXPECT_TRUE(missingLibraries().empty());
}

TEST(SystemLibraries, aMissingOneIsNamedWithThePackageOfThisSystem) {
    EXPECT_EQ(missingMessage("TIFF pictures need libtiff", OnDemand::tiff),
              "TIFF pictures need libtiff (package libtiff6)");
    EXPECT_STREQ(systemLibrary(OnDemand::zlib).package, "zlib1g");
    EXPECT_STREQ(systemLibrary(OnDemand::jxlThreads).file, "libjxl_threads.so.0.7");
}
