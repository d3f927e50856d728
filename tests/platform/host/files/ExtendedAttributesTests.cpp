#include "platform/host/files/ExtendedAttributes.h"
#include "platform/host/files/FileDescriptor.h"
#include "tests/support/AttributeSupport.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using ::testing::Contains;
using ::testing::IsSupersetOf;
using ::testing::Not;
using testing::runAsOrdinaryUser;
using testing::TemporaryFolder;

class ExtendedAttributes : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::keepsAttributes(file_))
            GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    }

    const TemporaryFolder folder_;
    const std::string file_ = folder_.write("a \xFF\n%s.jpg", "content");
};

TEST_F(ExtendedAttributes, whatWasSetIsGot) {
    const Bytes value = bytesOf(std::string("a\0b\xFF", 4));
    ASSERT_TRUE(setExtendedAttribute(file_, "user.xdg.comment", value));
    EXPECT_EQ(*getExtendedAttribute(file_, "user.xdg.comment"), value);
    ASSERT_TRUE(setExtendedAttribute(file_, "user.xdg.comment", {}));
    EXPECT_TRUE(getExtendedAttribute(file_, "user.xdg.comment")->empty()) << "an empty value is a value";
}

TEST_F(ExtendedAttributes, anAbsentAttributeOrFileIsNotFound) {
    EXPECT_EQ(getExtendedAttribute(file_, "user.none").failure().reason, Reason::notFound);
    EXPECT_EQ(removeExtendedAttribute(file_, "user.none").failure().reason, Reason::notFound);
    EXPECT_EQ(getExtendedAttribute(folder_ / "none", "user.a").failure().reason, Reason::notFound);
    EXPECT_EQ(setExtendedAttribute(folder_ / "none", "user.a", {}).failure().reason, Reason::notFound);
    EXPECT_EQ(listExtendedAttributes(folder_ / "none").failure().reason, Reason::notFound);
}

TEST_F(ExtendedAttributes, theListNamesAllAndRemovedOnesAreGone) {
    ASSERT_TRUE(setExtendedAttribute(file_, "user.a", bytesOf("1")));
    ASSERT_TRUE(setExtendedAttribute(file_, "user.b \xC3\xA9", bytesOf("2")));
    EXPECT_THAT(*listExtendedAttributes(file_), IsSupersetOf({"user.a", "user.b \xC3\xA9"}));
    ASSERT_TRUE(removeExtendedAttribute(file_, "user.a"));
    EXPECT_THAT(*listExtendedAttributes(file_), Not(Contains("user.a")));
}

TEST_F(ExtendedAttributes, aLinkIsFollowed) {
    std::filesystem::create_symlink(file_, folder_ / "link");
    ASSERT_TRUE(setExtendedAttribute(folder_ / "link", "user.a", bytesOf("1")));
    EXPECT_EQ(*getExtendedAttribute(file_, "user.a"), bytesOf("1"));
}

TEST_F(ExtendedAttributes, aValueBeyondTheKernelsBoundFailsAndChangesNothing) {
    ASSERT_TRUE(setExtendedAttribute(file_, "user.a", bytesOf("old")));
    const Reason reason = setExtendedAttribute(file_, "user.a", Bytes(100'000)).failure().reason;
    EXPECT_TRUE(reason == Reason::tooLarge || reason == Reason::noSpace);
    EXPECT_EQ(*getExtendedAttribute(file_, "user.a"), bytesOf("old"));
}

TEST_F(ExtendedAttributes, namesThatCannotBeAreMalformedOrUnsupported) {
    EXPECT_EQ(setExtendedAttribute(file_, "", {}).failure().reason, Reason::malformed);
    EXPECT_EQ(setExtendedAttribute(file_, std::string("user.a\0b", 8), {}).failure().reason,
              Reason::malformed);
    EXPECT_EQ(getExtendedAttribute("", "user.a").failure().reason, Reason::malformed);
    EXPECT_EQ(setExtendedAttribute(file_, "nonsense", {}).failure().reason, Reason::unsupported);
}

TEST_F(ExtendedAttributes, aPipeTakesNone) {
    ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(setExtendedAttribute(folder_ / "pipe", "user.a", {}).failure().reason, Reason::notPermitted);
}

TEST_F(ExtendedAttributes, withoutRightsNothingIsSet) {
    ::chmod(folder_.path().c_str(), 0755);
    ::chmod(file_.c_str(), 0444);
    runAsOrdinaryUser([&] {
        EXPECT_EQ(setExtendedAttribute(file_, "user.a", {}).failure().reason, Reason::notPermitted);
        EXPECT_TRUE(listExtendedAttributes(file_));
    });
}

TEST_F(ExtendedAttributes, allAreCopiedToAnotherFile) {
    ASSERT_TRUE(setExtendedAttribute(file_, "user.a", bytesOf("1")));
    ASSERT_TRUE(setExtendedAttribute(file_, "user.long", Bytes(2000, 7)));
    const std::string copy = folder_.write("copy", "");
    const FileDescriptor from(::open(file_.c_str(), O_RDONLY | O_CLOEXEC));
    const FileDescriptor to(::open(copy.c_str(), O_RDWR | O_CLOEXEC));
    ASSERT_TRUE(copyExtendedAttributes(from.number(), to.number()));
    EXPECT_EQ(*getExtendedAttribute(copy, "user.a"), bytesOf("1"));
    EXPECT_EQ(*getExtendedAttribute(copy, "user.long"), Bytes(2000, 7));
}

TEST_F(ExtendedAttributes, copyingToWhereNoneAreKeptFailsUnlessThereIsNothingToCopy) {
    const FileDescriptor from(::open(file_.c_str(), O_RDONLY | O_CLOEXEC));
    const FileDescriptor to(::open("/proc/self/comm", O_RDWR | O_CLOEXEC));
    EXPECT_TRUE(copyExtendedAttributes(from.number(), to.number()));
    ASSERT_TRUE(setExtendedAttribute(file_, "user.a", bytesOf("1")));
    EXPECT_EQ(copyExtendedAttributes(from.number(), to.number()).failure().reason, Reason::unsupported);
    EXPECT_TRUE(copyExtendedAttributes(from.number(), to.number(), AttributeLoss::accepted));
    EXPECT_TRUE(copyExtendedAttributes(to.number(), from.number())) << "where none are kept there are none";
}

TEST(ExtendedAttributesSupport, aFileSystemThatKeepsNoneIsUnsupported) {
    EXPECT_EQ(getExtendedAttribute("/proc/version", "user.a").failure().reason, Reason::unsupported);
    EXPECT_EQ(setExtendedAttribute("/proc/self/comm", "user.a", {}).failure().reason, Reason::unsupported);
}

} // namespace
} // namespace kestrine
