#include "platform/carbon/CFURL.h"
#include "platform/finder/FinderPath.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;
namespace fs = std::filesystem;

CFURLRef urlOf(const std::string& path) {
    return CFURLCreateWithFileSystemPath(NSString::fromUTF8(path), kCFURLPOSIXPathStyle, false);
}

TEST(CFURL, aURLOfAReferenceKnowsWhetherItIsAFolder) {
    const TemporaryFolder folder;
    folder.write("file", "");
    FSRef reference;
    ASSERT_TRUE(CFURLGetFSRef(urlOf(folder / "file"), &reference));
    EXPECT_FALSE(CFURLHasDirectoryPath(CFURLCreateFromFSRef(&reference)));
    ASSERT_TRUE(CFURLGetFSRef(urlOf(folder.path()), &reference));
    EXPECT_TRUE(CFURLHasDirectoryPath(CFURLCreateFromFSRef(&reference)));
    EXPECT_FALSE(CFURLHasDirectoryPath(urlOf(folder.path())));
}

TEST(CFURL, itsPathIsAvailableInBothStyles) {
    const TemporaryFolder folder;
    const std::string path = folder.write("caf\xe9", "");
    EXPECT_EQ(CFURLCopyFileSystemPath(urlOf(path), kCFURLPOSIXPathStyle), NSString::fromUTF8(path));
    const OptionalString finderPath = CFURLCopyFileSystemPath(urlOf(path), kCFURLHFSPathStyle);
    ASSERT_TRUE(finderPath);
    EXPECT_EQ(*finderPath, *finderPathOf(fs::canonical(path)));
    const CFURLRef back = CFURLCreateWithFileSystemPath(finderPath, kCFURLHFSPathStyle, false);
    ASSERT_NE(back, nullptr);
    EXPECT_EQ(back->path(), fs::canonical(path));
}

TEST(CFURL, aPathThatCannotBeEncodedGivesNull) {
    const OptionalString zero = std::u16string(u"/tmp\0a", 6);
    for (const OptionalString& path :
         {OptionalString(), OptionalString(u""), OptionalString(u"/\xd800"), zero})
        for (const CFURLPathStyle style : {kCFURLPOSIXPathStyle, kCFURLHFSPathStyle})
            EXPECT_EQ(CFURLCreateWithFileSystemPath(path, style, false), nullptr);
}

TEST(CFURL, ofAMissingItemHasNoReferenceAndNoFinderPath) {
    const TemporaryFolder folder;
    FSRef reference;
    const CFURLRef url = urlOf(folder / "missing");
    ASSERT_NE(url, nullptr);
    EXPECT_FALSE(CFURLGetFSRef(url, &reference));
    EXPECT_EQ(CFURLCopyFileSystemPath(url, kCFURLHFSPathStyle), std::nullopt);
}

TEST(CFURL, nullAndEmptyReferencesGiveNull) {
    const FSRef empty;
    FSRef reference;
    EXPECT_EQ(CFURLCreateFromFSRef(nullptr), nullptr);
    EXPECT_EQ(CFURLCreateFromFSRef(&empty), nullptr);
    FSRef topLevel;
    ASSERT_TRUE(CFURLGetFSRef(urlOf("/"), &reference));
    ASSERT_EQ(FSGetCatalogInfo(&reference, kFSCatInfoNone, nullptr, nullptr, nullptr, &topLevel), noErr);
    EXPECT_EQ(CFURLCreateFromFSRef(&topLevel), nullptr);
    EXPECT_FALSE(CFURLGetFSRef(nullptr, &reference));
    EXPECT_FALSE(CFURLGetFSRef(urlOf("/"), nullptr));
    EXPECT_FALSE(CFURLHasDirectoryPath(nullptr));
    EXPECT_EQ(CFURLCopyFileSystemPath(nullptr, kCFURLPOSIXPathStyle), std::nullopt);
}

TEST(CFURL, aReferenceToARemovedItemGivesNull) {
    const TemporaryFolder folder;
    FSRef reference;
    ASSERT_TRUE(CFURLGetFSRef(urlOf(folder.write("file", "")), &reference));
    fs::remove(folder / "file");
    EXPECT_EQ(CFURLCreateFromFSRef(&reference), nullptr);
}

} // namespace
} // namespace kestrine
