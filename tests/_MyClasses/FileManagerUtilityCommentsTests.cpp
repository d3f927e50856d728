#include "_MyClasses/Category/FileManagerUtilityMetadata.h"
#include "platform/finder/FinderMetadata.h"
#include "platform/host/files/ExtendedAttributes.h"
#include "tests/_MyClasses/CapturedLog.h"
#include "tests/_MyClasses/SystemVersion.h"
#include "tests/support/FinderPlace.h"
#include "tests/support/SystemFeatures.h"

#include <gmock/gmock.h>

namespace kestrine {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::SystemVersion;
namespace fs = std::filesystem;

constexpr std::int32_t tiger = 0x104B;
constexpr std::int32_t leopard = 0x1050;

NSString text(const std::string& bytes) { return NSString::fromUTF8(bytes); }

class FinderComments : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::keepsAttributes())
            GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    }

    NSString file(const std::string& name, const NSString& comment = u"") const {
        const std::string path = place_.write(name);
        EXPECT_TRUE(setFinderComment(path, comment));
        return text(path);
    }
    NSString missing() const { return text(place_ / "missing"); }

    const testing::FinderPlace place_;
    testing::CapturedLog log_;
};

/// The stored bytes, as other programs see them.
std::string keptComment(const NSString& path) {
    const Result<Bytes> bytes = getExtendedAttribute(path.utf8(), "user.xdg.comment");
    return bytes ? std::string(bytes->begin(), bytes->end()) : "none";
}

TEST_F(FinderComments, from10_5OnCommentsComeFromSpotlightAndAreNotLogged) {
    const SystemVersion version(leopard);
    EXPECT_EQ(commentForFile(file("a", u"caf\u00e9")), NSString(u"caf\u00e9"));
    EXPECT_THAT(log_.takeLines(), IsEmpty());
}

TEST_F(FinderComments, from10_5OnAMissingCommentIsNil) {
    const SystemVersion version(leopard);
    EXPECT_EQ(commentForFile(file("a")), std::nullopt);
    for (const OptionalString& path : {OptionalString(missing()), OptionalString(),
                                       OptionalString(u"/proc/version"), OptionalString(u"/\xd800")})
        EXPECT_EQ(commentForFile(path), std::nullopt);
    EXPECT_THAT(log_.takeLines(), IsEmpty());
}

TEST_F(FinderComments, before10_5CommentsComeFromTheFinderAndAreLogged) {
    const SystemVersion version(tiger);
    const NSString comment = u"100% caf\u00e9 %@ \U0001F600";
    EXPECT_EQ(commentForFile(file("a", comment)), comment);
    EXPECT_THAT(log_.takeLines(), ElementsAre(comment));
}

TEST_F(FinderComments, before10_5AMissingCommentIsAnEmptyString) {
    const SystemVersion version(tiger);
    EXPECT_EQ(commentForFile(file("a")), NSString());
    EXPECT_EQ(commentForFile(NSString(u"/proc/version")), NSString());
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(), NSString()));
}

TEST_F(FinderComments, before10_5MissingItemsAreNotLogged) {
    const SystemVersion version(tiger);
    for (const OptionalString& path :
         {OptionalString(missing()), OptionalString(), OptionalString(u"/\xd800")})
        EXPECT_EQ(commentForFile(path), NSString());
    EXPECT_THAT(log_.takeLines(), IsEmpty());
}

TEST_F(FinderComments, before10_5LongCommentsAreCutAfterAWholeCharacter) {
    const SystemVersion version(tiger);
    struct Row {
        std::u16string comment;
        std::u16string shown;
    };
    const auto times = [](std::size_t count, char16_t unit) { return std::u16string(count, unit); };
    for (const Row& row :
         {Row{times(255, u'a'), times(255, u'a')}, Row{times(256, u'a'), times(256, u'a')},
          Row{times(257, u'a'), times(256, u'a')}, Row{times(200, u'\u00e9'), times(128, u'\u00e9')},
          Row{u"a" + times(200, u'\u00e9'), u"a" + times(127, u'\u00e9')},
          Row{times(253, u'a') + u"\U0001F600b", times(253, u'a')},
          Row{times(252, u'a') + u"\U0001F480b", times(252, u'a') + u"\U0001F480"}})
        EXPECT_EQ(commentForFile(file("a", row.comment)), NSString(row.shown));
    const NSString whole = times(255, u'a') + u"\xdcff"; // 256 bytes, the last of which is not UTF-8
    EXPECT_EQ(commentForFile(file("a", whole)), whole);
}

TEST_F(FinderComments, areSetForOtherPrograms) {
    const NSString path = file("a:b \"c\"\n");
    setCommentForFile(NSString(u"caf\u00e9"), path);
    EXPECT_EQ(keptComment(path), "caf\xc3\xa9");
    EXPECT_THAT(log_.takeLines(), IsEmpty());
}

TEST_F(FinderComments, areSetForFolders) {
    const NSString path = text(place_.makeFolder("folder"));
    setCommentForFile(NSString(u"note"), path);
    EXPECT_EQ(keptComment(path), "note");
    const SystemVersion version(tiger);
    EXPECT_EQ(commentForFile(path), NSString(u"note"));
}

TEST_F(FinderComments, nilChangesNothingAndAnEmptyCommentRemoves) {
    const NSString path = file("a", u"before");
    setCommentForFile(std::nullopt, path);
    EXPECT_EQ(keptComment(path), "before");
    setCommentForFile(NSString(), path);
    EXPECT_EQ(keptComment(path), "none");
}

TEST_F(FinderComments, failuresToSetAreIgnored) {
    for (const OptionalString& path : {OptionalString(missing()), OptionalString(),
                                       OptionalString(u"/\xd800"), OptionalString(u"/proc/version")})
        setCommentForFile(NSString(u"note"), path);
    EXPECT_THAT(log_.takeLines(), IsEmpty());
}

TEST_F(FinderComments, aCommentThatCannotBeEncodedIsLoggedAndNotSet) {
    const NSString path = file("a", u"before");
    setCommentForFile(NSString(u"half \xd83d"), path);
    EXPECT_EQ(keptComment(path), "before");
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(u"Can not set Comment for ") + path));
}

TEST_F(FinderComments, invalidUTF8SurvivesARoundTrip) {
    const NSString path = file("caf\xe9");
    const NSString comment = text("raw \xff");
    setCommentForFile(comment, path);
    EXPECT_EQ(keptComment(path), "raw \xff");
    for (const std::int32_t number : {tiger, leopard}) {
        const SystemVersion version(number);
        EXPECT_EQ(commentForFile(path), comment);
    }
}

TEST_F(FinderComments, areCopied) {
    for (const std::int32_t number : {tiger, leopard}) {
        const SystemVersion version(number);
        const NSString destination = file("b", u"other");
        copyComment(file("a", u"note"), destination);
        EXPECT_EQ(keptComment(destination), "note");
    }
}

TEST_F(FinderComments, copyingAMissingCommentRemovesTheOtherOnlyBefore10_5) {
    const NSString source = file("a");
    const NSString destination = file("b", u"other");
    {
        const SystemVersion version(leopard);
        copyComment(source, destination);
        EXPECT_EQ(keptComment(destination), "other");
    }
    const SystemVersion version(tiger);
    copyComment(source, destination);
    EXPECT_EQ(keptComment(destination), "none");
}

TEST_F(FinderComments, areKeptWhenTheFinderCopiesAFile) {
    const NSString source = file("a", u"note");
    const NSString folder = text(place_.makeFolder("into"));
    EXPECT_EQ(AECopyFile(source, folder, false), noErr);
    EXPECT_EQ(keptComment(text(place_ / "into/a")), "note");
}

TEST_F(FinderComments, aCopyReplacesOnlyOnRequest) {
    const NSString source = text(place_.write("a", "new"));
    place_.write("into/a", "old");
    const NSString folder = text(place_ / "into");
    EXPECT_EQ(AECopyFile(source, folder, false), noErr);
    EXPECT_EQ(testing::readFile(place_ / "into/a"), "old");
    EXPECT_EQ(AECopyFile(source, folder, true), noErr);
    EXPECT_EQ(testing::readFile(place_ / "into/a"), "new");
}

TEST_F(FinderComments, aCopyNeedsBothPaths) {
    const NSString source = file("a");
    for (const OptionalString& path : {OptionalString(), OptionalString(u"")}) {
        EXPECT_EQ(AECopyFile(source, path, false), paramErr);
        EXPECT_EQ(AECopyFile(path, source, false), paramErr);
    }
}

TEST_F(FinderComments, aCopyOfAMissingItemGivesItsError) {
    const NSString source = file("a");
    EXPECT_EQ(AECopyFile(missing(), text(place_.makeFolder("into")), false), coreFoundationUnknownErr);
    EXPECT_EQ(AECopyFile(source, missing(), false), coreFoundationUnknownErr);
}

TEST_F(FinderComments, aCopyThatTheFinderRefusesIsNotReported) {
    const NSString source = file("a");
    EXPECT_EQ(AECopyFile(source, source, false), noErr);
    EXPECT_EQ(testing::readFile(source.utf8()), "content");
}

} // namespace
} // namespace kestrine
