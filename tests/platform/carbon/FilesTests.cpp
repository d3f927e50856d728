#include "platform/carbon/Files.h"
#include "platform/finder/FinderMetadata.h"
#include "platform/finder/Volumes.h"
#include "tests/support/SystemFeatures.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;
namespace fs = std::filesystem;

OSStatus makeRef(const std::string& path, FSRef& reference, bool* isDirectory = nullptr) {
    return FSPathMakeRef(reinterpret_cast<const std::uint8_t*>(path.c_str()), &reference, isDirectory);
}

FSRef refOf(const std::string& path) {
    FSRef reference;
    EXPECT_EQ(makeRef(path, reference), noErr) << path;
    return reference;
}

NSString textOf(const HFSUniStr255& name) { return std::u16string(name.unicode, name.length); }

OSErr nameAndParent(const FSRef& reference, NSString& name, FSRef& parent) {
    HFSUniStr255 unicode;
    const OSErr status = FSGetCatalogInfo(&reference, kFSCatInfoNone, nullptr, &unicode, nullptr, &parent);
    if (status == noErr)
        name = textOf(unicode);
    return status;
}

NSString nameOf(const std::string& path) {
    NSString name;
    FSRef parent;
    EXPECT_EQ(nameAndParent(refOf(path), name, parent), noErr);
    return name;
}

TEST(FSPathMakeRef, tellsFilesFromFolders) {
    const TemporaryFolder folder;
    bool isDirectory = true;
    FSRef reference;
    EXPECT_EQ(makeRef(folder.write("file", ""), reference, &isDirectory), noErr);
    EXPECT_FALSE(isDirectory);
    EXPECT_EQ(makeRef(folder.path().string(), reference, &isDirectory), noErr);
    EXPECT_TRUE(isDirectory);
}

TEST(FSPathMakeRef, emptiesTheReferenceWhenNothingIsThere) {
    const TemporaryFolder folder;
    FSRef reference = refOf(folder.path().string());
    EXPECT_EQ(makeRef(folder / "missing", reference), fnfErr);
    EXPECT_EQ(reference.node, nullptr);
    EXPECT_EQ(makeRef("", reference), fnfErr);
    EXPECT_EQ(makeRef(folder.write("file", "") + "/below", reference), fnfErr);
}

TEST(FSPathMakeRef, needsItsArguments) {
    FSRef reference = refOf("/");
    EXPECT_EQ(FSPathMakeRef(nullptr, &reference, nullptr), paramErr);
    EXPECT_EQ(reference.node, nullptr);
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const std::uint8_t*>("/"), nullptr, nullptr), paramErr);
}

TEST(FSPathMakeRef, followsLinksAlsoTheLastOne) {
    const TemporaryFolder folder;
    folder.write("real/file", "");
    fs::create_symlink("real/file", folder / "link");
    fs::create_symlink("nowhere", folder / "dangling");
    EXPECT_EQ(nameOf(folder / "link"), NSString(u"file"));
    FSRef reference;
    EXPECT_EQ(makeRef(folder / "dangling", reference), fnfErr);
}

TEST(FSGetCatalogInfo, walksUpToOneLevelAboveTheVolume) {
    const TemporaryFolder folder;
    FSRef reference = refOf(folder.write("inner/file", ""));
    std::vector<NSString> names;
    NSString name;
    FSRef parent;
    while (nameAndParent(reference, name, parent) == noErr) {
        names.insert(names.begin(), name);
        reference = parent;
        ASSERT_LT(names.size(), 100u);
    }
    ASSERT_GE(names.size(), 4u);
    EXPECT_EQ(names[0], topLevelName());
    EXPECT_EQ(names[names.size() - 2], NSString(u"inner"));
    EXPECT_EQ(names.back(), NSString(u"file"));
    const auto volumes = mountedVolumes();
    ASSERT_TRUE(volumes);
    EXPECT_TRUE(std::ranges::any_of(*volumes, [&](const Volume& volume) { return volume.name == names[1]; }));
}

TEST(FSGetCatalogInfo, aVolumesRootIsFollowedByExactlyOneLevel) {
    NSString name;
    FSRef top;
    FSRef beyond;
    ASSERT_EQ(nameAndParent(refOf("/"), name, top), noErr);
    ASSERT_EQ(nameAndParent(top, name, beyond), noErr);
    EXPECT_EQ(name, topLevelName());
    EXPECT_EQ(nameAndParent(beyond, name, top), errFSBadFSRef);
}

TEST(FSGetCatalogInfo, theLevelAboveTheVolumesHasNothingButAName) {
    NSString name;
    FSRef top;
    ASSERT_EQ(nameAndParent(refOf("/"), name, top), noErr);
    FSCatalogInfo information;
    FSSpec specification;
    EXPECT_EQ(FSGetCatalogInfo(&top, kFSCatInfoFinderInfo, &information, nullptr, nullptr, nullptr),
              errFSOperationNotSupported);
    EXPECT_EQ(FSGetCatalogInfo(&top, kFSCatInfoNone, nullptr, nullptr, &specification, nullptr),
              errFSOperationNotSupported);
    EXPECT_EQ(FSSetCatalogInfo(&top, kFSCatInfoFinderInfo, &information), errFSOperationNotSupported);
}

TEST(FSGetCatalogInfo, oddNamesComeAsTheFinderShowsThem) {
    const TemporaryFolder folder;
    struct Row {
        std::string name;
        NSString shown;
    };
    for (const Row& row :
         {Row{"a:b", u"a/b"}, Row{"\"quoted\"\n", u"\"quoted\"\n"},
          Row{"caf\xe9", NSString::fromUTF8("caf\xe9")}, Row{"\xf0\x9f\x98\x80", u"\U0001F600"},
          Row{std::string(255, 'n'), std::u16string(255, u'n')}})
        EXPECT_EQ(nameOf(folder.write(row.name, "")), row.shown);
}

TEST(FSGetCatalogInfo, failsForWhatIsGoneAndForNoReference) {
    const TemporaryFolder folder;
    const FSRef reference = refOf(folder.write("file", ""));
    fs::remove(folder / "file");
    const FSRef empty;
    EXPECT_EQ(FSGetCatalogInfo(&reference, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), fnfErr);
    EXPECT_EQ(FSGetCatalogInfo(&empty, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), errFSBadFSRef);
    EXPECT_EQ(FSGetCatalogInfo(nullptr, kFSCatInfoNone, nullptr, nullptr, nullptr, nullptr), paramErr);
}

TEST(FSGetCatalogInfo, aSpecificationHasTheVolumeTheParentAndTheName) {
    const TemporaryFolder folder;
    const FSRef reference = refOf(folder.write("file", ""));
    const FSRef sibling = refOf(folder.write("other", ""));
    FSSpec first;
    FSSpec second;
    FSCatalogInfo information;
    ASSERT_EQ(FSGetCatalogInfo(&reference, kFSCatInfoVolume, &information, nullptr, &first, nullptr), noErr);
    ASSERT_EQ(FSGetCatalogInfo(&sibling, kFSCatInfoNone, nullptr, nullptr, &second, nullptr), noErr);
    EXPECT_EQ(first.name, NSString(u"file"));
    EXPECT_EQ(first.parID, second.parID);
    EXPECT_LE(first.vRefNum, -100);
    EXPECT_EQ(first.vRefNum, information.volume);
}

TEST(FSGetCatalogInfo, theStartUpVolumeIsNumberedMinusOneHundred) {
    const FSRef root = refOf("/");
    FSSpec specification;
    ASSERT_EQ(FSGetCatalogInfo(&root, kFSCatInfoNone, nullptr, nullptr, &specification, nullptr), noErr);
    EXPECT_EQ(specification.vRefNum, -100);
    EXPECT_EQ(specification.parID, 1u);
}

TEST(FSSetCatalogInfo, setsAllFiveFieldsAndKeepsTheRest) {
    if (!testing::keepsAttributes())
        GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    const TemporaryFolder folder;
    const std::string path = folder.write("file", "");
    FinderInfo kept;
    kept.extended[3] = 9;
    ASSERT_TRUE(setFinderInformation(path, kept));
    const FSRef reference = refOf(path);
    const FileInfo wanted{fourCharacterCode("JPEG"), fourCharacterCode("8BIM"), 0x8004, {-3, 40}, 7};
    FSCatalogInfo information{0, wanted};
    ASSERT_EQ(FSSetCatalogInfo(&reference, kFSCatInfoFinderInfo, &information), noErr);
    information = {};
    ASSERT_EQ(FSGetCatalogInfo(&reference, kFSCatInfoFinderInfo, &information, nullptr, nullptr, nullptr),
              noErr);
    EXPECT_EQ(information.finderInfo, wanted);
    EXPECT_EQ(labelOf(information.finderInfo), 2);
    EXPECT_EQ(finderInformation(path)->extended, kept.extended);
}

TEST(FSSetCatalogInfo, refusesWhatItCannotSet) {
    const FSRef empty;
    const FSRef root = refOf("/");
    const FSCatalogInfo information;
    EXPECT_EQ(FSSetCatalogInfo(nullptr, kFSCatInfoFinderInfo, &information), paramErr);
    EXPECT_EQ(FSSetCatalogInfo(&root, kFSCatInfoFinderInfo, nullptr), paramErr);
    EXPECT_EQ(FSSetCatalogInfo(&root, kFSCatInfoVolume, &information), paramErr);
    EXPECT_EQ(FSSetCatalogInfo(&empty, kFSCatInfoFinderInfo, &information), errFSBadFSRef);
}

TEST(FSSetCatalogInfo, aFileSystemWithoutAttributesSaysSo) {
    const FSRef reference = refOf("/proc/version");
    FSCatalogInfo information{5, {}};
    EXPECT_EQ(FSGetCatalogInfo(&reference, kFSCatInfoFinderInfo, &information, nullptr, nullptr, nullptr),
              errFSOperationNotSupported);
    EXPECT_EQ(information.volume, 5);
    EXPECT_EQ(FSSetCatalogInfo(&reference, kFSCatInfoFinderInfo, &information), errFSOperationNotSupported);
}

} // namespace
} // namespace kestrine
