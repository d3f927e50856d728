#include "_MyClasses/Category/FileManagerUtilityMetadata.h"
#include "_MyClasses/Category/FileManagerUtilityScripting.h"
#include "platform/finder/FinderMetadata.h"
#include "tests/support/FinderPlace.h"

#include <gtest/gtest.h>
#include <map>

namespace kestrine {
namespace {

namespace fs = std::filesystem;

NSString text(const std::string& bytes) { return NSString::fromUTF8(bytes); }

void copyByScript(const std::string& item, const std::string& folder, bool replaces) {
    (void)ASCopyFilesToFolder({text(item)}, text(folder), replaces);
}

void copyByEvent(const std::string& item, const std::string& folder, bool replaces) {
    EXPECT_EQ(AECopyFile(text(item), text(folder), replaces), noErr);
}

/// Every file below `folder` with its content and comment.
std::map<std::string, std::string> filesBelow(const fs::path& folder) {
    std::map<std::string, std::string> files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder)) {
        const auto comment = finderComment(entry.path());
        files[entry.path().lexically_relative(folder)] =
            (entry.is_regular_file() ? testing::readFile(entry.path()) : "folder") + "|"
            + (comment && *comment ? (*comment)->utf8() : "");
    }
    return files;
}

TEST(FinderInterfaces, aScriptAndAnEventMakeTheSameCopy) {
    const testing::FinderPlace place;
    place.write("tree/inner/file", "deep");
    const std::string file = place.write("a:b", "new");
    (void)setFinderComment(file, u"note");
    for (const std::string& item : {file, place / "tree"}) {
        for (const bool replaces : {false, true}) {
            for (const char* folder : {"script", "event"})
                place.write(std::string(folder) + "/a:b", "old");
            copyByScript(item, place / "script", replaces);
            copyByEvent(item, place / "event", replaces);
            EXPECT_EQ(filesBelow(place / "script"), filesBelow(place / "event")) << item << replaces;
        }
    }
    EXPECT_EQ(filesBelow(place / "event").at("tree/inner/file"), "deep|");
}

} // namespace
} // namespace kestrine
