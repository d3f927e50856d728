#include "_MyClasses/Category/FileManagerUtilityMetadata.h"

#include "platform/finder/FinderMetadata.h"
#include "tests/_MyClasses/CapturedLog.h"
#include "tests/_MyClasses/SystemVersion.h"
#include "tests/support/SystemFeatures.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace kestrine {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::SystemVersion;
namespace fs = std::filesystem;

const OptionalString halfACharacter = u"/tmp/\xd800";
const NSString copied = u"copyFinderInfo";

NSString text(const std::string& bytes) { return NSString::fromUTF8(bytes); }

FinderInfo labelled(int label) {
    return {fourCharacterCode("JPEG"),
            fourCharacterCode("8BIM"),
            static_cast<std::uint16_t>(label << 1),
            {3, -4},
            5};
}

class FileManagerUtilityMetadata : public ::testing::Test {
protected:
    void SetUp() override {
        if (!testing::keepsAttributes())
            GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    }

    NSString file(const std::string& name, const FinderInfo& information = {}) const {
        const std::string path = folder_.write(name, "content");
        EXPECT_TRUE(setFinderInformation(path, information));
        return text(path);
    }
    NSString missing() const { return text(folder_ / "missing"); }

    const testing::TemporaryFolder folder_;
    testing::CapturedLog log_;
};

FinderInfo informationAt(const NSString& path) { return *finderInformation(path.utf8()); }

TEST_F(FileManagerUtilityMetadata, aLabelIsReturnedAndLogged) {
    EXPECT_EQ(finderLabelColorOfPath(file("a", labelled(2))), 2);
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(u"Label:2")));
    EXPECT_EQ(labelForPath(file("b", labelled(7))), 7);
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(u"Label:7")));
}

TEST_F(FileManagerUtilityMetadata, noLabelIsLoggedToo) {
    EXPECT_EQ(finderLabelColorOfPath(file("a")), 0);
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(u"Label:0")));
}

TEST_F(FileManagerUtilityMetadata, theLabelOfAMissingFileIsZeroAndNothingIsLogged) {
    for (const OptionalString& path : {OptionalString(missing()), OptionalString(), OptionalString(u""),
                                       halfACharacter, OptionalString(u"/proc/version")})
        EXPECT_EQ(finderLabelColorOfPath(path), 0);
    EXPECT_THAT(log_.takeLines(), IsEmpty());
}

TEST_F(FileManagerUtilityMetadata, otherFlagsDoNotChangeTheLabel) {
    FinderInfo information = labelled(0);
    information.flags = 0xFFF1;
    EXPECT_EQ(finderLabelColorOfPath(file("a", information)), 0);
}

TEST_F(FileManagerUtilityMetadata, before10_6TheLabelIsRead) {
    const SystemVersion version(0x105F);
    EXPECT_EQ(finderLabelForPath(file("a", labelled(3))), 3);
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(u"Label:3")));
}

TEST_F(FileManagerUtilityMetadata, from10_6OnTheLabelIsZeroForEveryReference) {
    const SystemVersion version(0x1060);
    EXPECT_EQ(finderLabelForPath(file("a", labelled(3))), 0);
    EXPECT_EQ(finderLabelForPath(missing()), 0);
    EXPECT_EQ(finderLabelForPath(std::nullopt), 0);
    EXPECT_THAT(log_.takeLines(), IsEmpty());
}

TEST_F(FileManagerUtilityMetadata, from10_6OnAPathThatCannotBeEncodedIsLoggedAndHasNoLabel) {
    const SystemVersion version(0x1060);
    EXPECT_EQ(finderLabelForPath(halfACharacter), 0);
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(u"Can not encode path for /tmp/\xfffd")));
}

TEST_F(FileManagerUtilityMetadata, aReferenceIsMadeOfAPath) {
    FSRef reference;
    EXPECT_EQ(getFSRefFromPath(file("a"), &reference), 0);
    EXPECT_NE(reference.node, nullptr);
}

TEST_F(FileManagerUtilityMetadata, anErrorWhileMakingAReferenceIsIgnored) {
    FSRef reference;
    for (const OptionalString& path : {OptionalString(missing()), OptionalString(), OptionalString(u"")}) {
        EXPECT_EQ(getFSRefFromPath(file("a"), &reference), 0);
        EXPECT_EQ(getFSRefFromPath(path, &reference), 0);
        EXPECT_EQ(reference.node, nullptr);
    }
    EXPECT_EQ(getFSRefFromPath(file("a"), nullptr), 0);
    EXPECT_THAT(log_.takeLines(), IsEmpty());
}

TEST_F(FileManagerUtilityMetadata, aPathThatCannotBeEncodedGivesMinusOneAndIsLogged) {
    FSRef reference;
    EXPECT_EQ(getFSRefFromPath(file("a"), &reference), 0);
    EXPECT_EQ(getFSRefFromPath(halfACharacter, &reference), -1);
    EXPECT_EQ(reference.node, nullptr);
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(u"Can not encode path for /tmp/\xfffd")));
}

TEST_F(FileManagerUtilityMetadata, namesThatAreNotUTF8Work) {
    EXPECT_EQ(finderLabelColorOfPath(file("caf\xe9", labelled(4))), 4);
}

TEST_F(FileManagerUtilityMetadata, aFileTypeIsReadAndZeroWithoutOne) {
    EXPECT_EQ(getFileTypeForPath(file("a", labelled(0))), fourCharacterCode("JPEG"));
    EXPECT_EQ(getFileTypeForPath(file("b")), 0u);
    for (const OptionalString& path :
         {OptionalString(missing()), OptionalString(), OptionalString(u"/proc/version")})
        EXPECT_EQ(getFileTypeForPath(path), 0u);
}

TEST_F(FileManagerUtilityMetadata, onlyTheFlagMakesAnAlias) {
    FinderInfo information;
    information.flags = 0x8000;
    EXPECT_TRUE(isAliasPath(file("a", information)));
    information.flags = 0x7FFF;
    EXPECT_FALSE(isAliasPath(file("b", information)));
    EXPECT_FALSE(isAliasPath(missing()));
    fs::create_symlink("b", folder_ / "link");
    EXPECT_FALSE(isAliasPath(text(folder_ / "link")));
}

TEST_F(FileManagerUtilityMetadata, gettingFinderInformationReturnsOnlyTheStatus) {
    FSRef reference;
    (void)getFSRefFromPath(file("a", labelled(2)), &reference);
    FileInfo information{1, 2, 3, {4, 5}, 6};
    EXPECT_EQ(myFSRefGetFInfo(&reference, &information), noErr);
    EXPECT_EQ(information, (FileInfo{1, 2, 3, {4, 5}, 6}));
    EXPECT_EQ(myFSRefGetFInfo(&reference, nullptr), noErr);
    const FSRef empty;
    EXPECT_EQ(myFSRefGetFInfo(&empty, &information), errFSBadFSRef);
    EXPECT_EQ(myFSRefGetFInfo(nullptr, &information), paramErr);
}

TEST_F(FileManagerUtilityMetadata, settingFinderInformationSetsAllFiveFields) {
    const NSString path = file("a", labelled(2));
    FSRef reference;
    (void)getFSRefFromPath(path, &reference);
    const FileInfo information{1, 2, 3, {4, 5}, 6};
    EXPECT_EQ(myFSRefSetFInfo(&reference, &information), noErr);
    EXPECT_EQ(informationAt(path), (FinderInfo{1, 2, 3, {4, 5}, 6}));
    const FSRef empty;
    EXPECT_EQ(myFSRefSetFInfo(&empty, &information), errFSBadFSRef);
    EXPECT_EQ(myFSRefSetFInfo(nullptr, &information), paramErr);
    EXPECT_EQ(myFSRefSetFInfo(&reference, nullptr), paramErr);
}

TEST_F(FileManagerUtilityMetadata, finderInformationAndCommentAreCopied) {
    const NSString source = file("a", labelled(5));
    const NSString destination = file("b");
    ASSERT_TRUE(setFinderComment(source.utf8(), u"note"));
    EXPECT_EQ(copyFinderInfo(source, destination), noErr);
    EXPECT_EQ(informationAt(destination), labelled(5));
    EXPECT_EQ(*finderComment(destination.utf8()), NSString(u"note"));
    EXPECT_THAT(log_.takeLines(), ElementsAre(copied));
}

TEST_F(FileManagerUtilityMetadata, copyingIgnoresFailures) {
    const NSString destination = file("b", labelled(5));
    EXPECT_EQ(copyFinderInfo(missing(), destination), noErr);
    EXPECT_EQ(informationAt(destination), FinderInfo());
    EXPECT_EQ(copyFinderInfo(destination, missing()), noErr);
    EXPECT_EQ(copyFinderInfo(std::nullopt, std::nullopt), noErr);
    EXPECT_THAT(log_.takeLines(), ElementsAre(copied, copied, copied));
}

TEST_F(FileManagerUtilityMetadata, equalLabelsCopyNothing) {
    FinderInfo other = labelled(3);
    other.type = fourCharacterCode("TEXT");
    const NSString destination = file("b", other);
    copyLabelIfNeeded(file("a", labelled(3)), destination);
    EXPECT_EQ(informationAt(destination), other);
    EXPECT_THAT(log_.takeLines(), Not(Contains(copied)));
}

TEST_F(FileManagerUtilityMetadata, differentLabelsCopyEverything) {
    const NSString destination = file("b", labelled(1));
    copyLabelIfNeeded(file("a", labelled(3)), destination);
    EXPECT_EQ(informationAt(destination), labelled(3));
    EXPECT_THAT(log_.takeLines(), ElementsAre(NSString(u"Label:3"), NSString(u"Label:1"), copied));
}

TEST_F(FileManagerUtilityMetadata, updatingAnIconChangesNothing) {
    const FSSpec item;
    EXPECT_EQ(updateFinderIcon(&item), noErr);
    EXPECT_EQ(updateFinderIcon(nullptr), noErr);
}

TEST_F(FileManagerUtilityMetadata, aFolderIsCopiedWithoutItsContents) {
    folder_.write("source/inside", "content");
    const std::string source = folder_ / "source";
    const std::string destination = folder_ / "destination";
    ASSERT_EQ(::chmod(source.c_str(), 0750), 0);
    ASSERT_TRUE(setFinderInformation(source, labelled(6)));
    ASSERT_TRUE(setFinderComment(source, u"a folder"));
    myUtility::copyFolderFrom(NSFileManager::defaultManager(), text(source), text(destination));
    EXPECT_TRUE(fs::is_directory(destination));
    EXPECT_TRUE(fs::is_empty(destination));
    EXPECT_EQ(fs::status(destination).permissions(), fs::perms(0750));
    EXPECT_EQ(informationAt(text(destination)), labelled(6));
    EXPECT_EQ(*finderComment(destination), NSString(u"a folder"));
}

TEST_F(FileManagerUtilityMetadata, theRightsOfAFolderThatALinkLeadsToAreNotCopied) {
    fs::create_directory(folder_ / "real");
    fs::permissions(folder_ / "real", fs::perms::owner_all);
    fs::create_directory_symlink(folder_ / "real", folder_ / "link");
    fs::create_directory(folder_ / "ordinary");
    myUtility::copyFolderFrom(NSFileManager::defaultManager(), text(folder_ / "link"),
                              text(folder_ / "destination"));
    EXPECT_EQ(fs::status(folder_ / "destination").permissions(),
              fs::status(folder_ / "ordinary").permissions());
}

TEST_F(FileManagerUtilityMetadata, anExistingFolderGetsTheInformationToo) {
    folder_.write("source/inside", "");
    folder_.write("destination/kept", "kept");
    ASSERT_TRUE(setFinderInformation(folder_ / "source", labelled(6)));
    myUtility::copyFolderFrom(NSFileManager::defaultManager(), text(folder_ / "source"),
                              text(folder_ / "destination"));
    EXPECT_EQ(testing::readFile(folder_ / "destination/kept"), "kept");
    EXPECT_EQ(informationAt(text(folder_ / "destination")), labelled(6));
}

} // namespace
} // namespace kestrine
