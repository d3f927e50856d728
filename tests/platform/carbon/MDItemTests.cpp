#include "platform/carbon/MDItem.h"
#include "platform/finder/FinderMetadata.h"
#include "tests/support/SystemFeatures.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;

TEST(MDItem, givesTheFindersComment) {
    if (!testing::keepsAttributes())
        GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    const MDItemRef item = MDItemCreate(NSString::fromUTF8(path));
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(MDItemCopyAttribute(item, kMDItemFinderComment), nullptr);
    ASSERT_TRUE(setFinderComment(path, u"caf\u00e9"));
    EXPECT_EQ(NSString::fromObject(MDItemCopyAttribute(item, kMDItemFinderComment)), NSString(u"caf\u00e9"));
    EXPECT_EQ(MDItemCopyAttribute(item, u"kMDItemKind"), nullptr);
}

TEST(MDItem, isNoneWhereNothingIs) {
    const TemporaryFolder folder;
    for (const OptionalString& path :
         {OptionalString(), OptionalString(u""), OptionalString(NSString::fromUTF8(folder / "missing")),
          OptionalString(u"/\xd800"), OptionalString(std::u16string(u"/\0a", 3))})
        EXPECT_EQ(MDItemCreate(path), nullptr);
    EXPECT_EQ(MDItemCopyAttribute(nullptr, kMDItemFinderComment), nullptr);
}

TEST(MDItem, aFileSystemWithoutAttributesHasNone) {
    EXPECT_EQ(MDItemCopyAttribute(MDItemCreate(NSString(u"/proc/version")), kMDItemFinderComment), nullptr);
}

} // namespace
} // namespace kestrine
