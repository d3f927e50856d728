#include "platform/host/files/ContentDigest.h"

#include "platform/host/files/FileMark.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(ContentDigest, isFNV1a) { // the published values for these strings
    EXPECT_EQ(digestOf(std::string()).number, 0xcbf29ce484222325);
    EXPECT_EQ(digestOf(std::string("a")).number, 0xaf63dc4c8601ec8c);
    EXPECT_EQ(digestOf(std::string("foobar")).number, 0x85944171f73967e8);
}

TEST(ContentDigest, ofAFileIsThatOfItsContent) {
    const testing::TemporaryFolder folder;
    EXPECT_EQ(*digestOfFile(folder.write("a", "foobar")), digestOf(std::string("foobar")));
    EXPECT_EQ(digestOfFile(folder / "absent").failure().reason, Reason::notFound);
}

TEST(FileMark, tellsAChangedFileAndACopyApart) {
    const testing::TemporaryFolder folder;
    const std::string path = folder.write("a", "content");
    const FileMark before = *markOfFile(path);
    EXPECT_EQ(*markOfItem(path), before);
    std::filesystem::copy_file(path, folder / "b");
    std::filesystem::last_write_time(folder / "b", std::filesystem::last_write_time(path));
    EXPECT_NE(*markOfFile(folder / "b"), before);
    EXPECT_TRUE(markOfFile(folder / "b")->looksLike(before));
    folder.write("b", "changed content");
    EXPECT_FALSE(markOfFile(folder / "b")->looksLike(before));
}

} // namespace
} // namespace kestrine
