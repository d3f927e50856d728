#include "models/ResizeSet.h"

#include "models/StoredPresets.h"
#include "platform/foundation/NSCollections.h"
#include "platform/foundation/NSException.h"
#include "tests/support/PresetBuilder.h"

#include <cmath>
#include <gtest/gtest.h>

namespace kestrine {

using testing::makeSet;

namespace {

/// The first set of an archive of one, archived and read again.
std::shared_ptr<const ResizeSet> roundTrip(const std::shared_ptr<const ResizeSet>& set) {
    const auto data = *archivedSets({set});
    const Object root = *NSUnarchiver::unarchiveObjectWithData(data->bytes(), archivedSetClasses());
    return std::dynamic_pointer_cast<const ResizeSet>(
        std::dynamic_pointer_cast<const NSArray>(root)->elements().front());
}

Bytes bytesOfHex(std::string_view hex) {
    Bytes bytes;
    for (std::size_t i = 0; i + 1 < hex.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16)));
    return bytes;
}

/// The archive of "Web" and "Thumb 50%".
const std::string_view twoPresets =
    "040b73747265616d747970656481e8038401408484840e4e534d757461626c654172726179008484074e53417272617900848408"
    "4e534f626a6563740085840169029284848409526573697a65536574049592848484084e53537472696e67019584012b03576562"
    "8684016300960284016681b0049b81b0049b649b81200396009b8300007a429a019a019a019a009a018692849792849999095468"
    "756d6220353025869a0096019b009b009b83333305429b81b00496019b469a009a019a009a019a008686";

/// An answering panel.
class FakePanel final : public NSOpenPanel {
public:
    static int answer;
    int runModal() override {
        asked = message;
        allowed = std::string(canChooseFiles ? "files " : "") + (canChooseDirectories ? "folders " : "")
                  + (canCreateDirectories ? "new " : "") + (allowsMultipleSelection ? "several " : "");
        return answer;
    }
    NSString filename() const override { return u"/chosen/folder"; }

    static NSString asked;
    static std::string allowed;
};
int FakePanel::answer = NSOKButton;
NSString FakePanel::asked;
std::string FakePanel::allowed;

struct WithFakePanel {
    WithFakePanel() {
        NSOpenPanel::setFactory(
            []() -> std::unique_ptr<NSOpenPanel> { return std::make_unique<FakePanel>(); });
    }
    ~WithFakePanel() { NSOpenPanel::setFactory(nullptr); }
};

} // namespace

TEST(ResizeSet, aFreshSetWritesPNGScalesTo1200By1200InHighQualityAndConvertsResolution) {
    const ResizeSet set;
    EXPECT_EQ(set.name(), NSString(u"Untitled"));
    EXPECT_EQ(set.formatType(), FormatTypePNG);
    EXPECT_EQ(set.resizeType(), ResizeTypeSize);
    EXPECT_EQ(set.width(), 1200.0F);
    EXPECT_EQ(set.height(), 1200.0F);
    EXPECT_EQ(set.ratio(), 100.0F);
    EXPECT_EQ(set.maxSize(), 1200.0F);
    EXPECT_EQ(set.compression(), 70.0F);
    EXPECT_EQ(set.highQuality(), 1);
    EXPECT_EQ(set.convertResolution(), 1);
    EXPECT_EQ(set.replaceFile() + set.chooseFolder() + set.attachExifData() + set.autoRotate(), 0);
    EXPECT_FALSE(set.chosenFolderPath().has_value());
}

TEST(ResizeSet, archivingKeepsAll14FieldsButNotTheChosenFolder) {
    const auto set = makeSet(u"Größe 日本", {{u"replaceFile", std::int8_t{2}},
                                             {u"chooseFolder", std::int8_t{1}},
                                             {u"resizeType", std::int32_t{-7}},
                                             {u"height", 0.1F},
                                             {u"width", 1e30F},
                                             {u"ratio", -0.5F},
                                             {u"maxSize", 16777217.0F},
                                             {u"formatType", std::int32_t{2147483647}},
                                             {u"compression", INFINITY},
                                             {u"attachExifData", std::int8_t{-1}},
                                             {u"convertResolution", std::int8_t{0}},
                                             {u"autoRotate", std::int8_t{127}},
                                             {u"highQuality", std::int8_t{-128}}});
    set->setValueForKey(NSString(u"/somewhere").object(), u"chosenFolderPath");
    const auto read = roundTrip(set);
    int archived = 0;
    for (const ResizeSet::Field& field : ResizeSet::fields()) {
        archived += field.isArchived();
        if (field.isArchived())
            std::visit([&](auto member) { EXPECT_EQ(set.get()->*member, read.get()->*member) << field.key; },
                       field.member);
    }
    EXPECT_EQ(archived, 14);
    EXPECT_FALSE(read->chosenFolderPath().has_value());
}

TEST(ResizeSet, theArchiveOfSetsIsTheKnownOneByteForByte) {
    const auto web = makeSet(u"Web", {{u"resizeType", 2},
                                      {u"maxSize", 800.0F},
                                      {u"formatType", 0},
                                      {u"compression", 62.5F},
                                      {u"attachExifData", true},
                                      {u"autoRotate", true}});
    const auto thumb = makeSet(u"Thumb 50%", {{u"resizeType", 1},
                                              {u"height", 0.0F},
                                              {u"width", 0.0F},
                                              {u"ratio", 33.3F},
                                              {u"chooseFolder", true},
                                              {u"highQuality", false}});
    EXPECT_EQ((*archivedSets({web, thumb}))->bytes(), bytesOfHex(twoPresets));
}

TEST(ResizeSet, anArchiveOfVersion1GivesNoTurningNoChosenFolderAndHighQuality) {
    Bytes bytes = bytesOfHex(twoPresets);
    bytes[0x50] = 1; // the class version; the last three values of the second set go, then the first one's
    bytes.erase(bytes.begin() + 0xbd, bytes.begin() + 0xc3);
    bytes.erase(bytes.begin() + 0x8b, bytes.begin() + 0x91);
    const Object root = *NSUnarchiver::unarchiveObjectWithData(bytes, archivedSetClasses());
    const auto sets = std::dynamic_pointer_cast<const NSArray>(root)->elements();
    ASSERT_EQ(sets.size(), 2U);
    for (const Object& element : sets) {
        const auto& set = dynamic_cast<const ResizeSet&>(*element);
        EXPECT_EQ(set.autoRotate(), 0);
        EXPECT_EQ(set.chooseFolder(), 0);
        EXPECT_EQ(set.highQuality(), 1);
    }
}

TEST(ResizeSet, turningReplaceFileOnTurnsChooseFolderOffAndItsObserversSeeIt) {
    const auto set = makeSet(u"Web", {{u"chooseFolder", true}});
    int changes = 0;
    set->observers().add(u"chooseFolder", [&] { ++changes; });
    set->setReplaceFile(1);
    EXPECT_EQ(set->chooseFolder(), 0);
    EXPECT_EQ(changes, 1);
}

TEST(ResizeSet, observersOfReplaceFileNeverSeeChooseFolderOnAsWell) {
    const auto set = makeSet(u"Web", {{u"chooseFolder", true}});
    std::vector<std::string> seen;
    set->observers().add(u"replaceFile", [&] {
        seen.push_back("replaceFile");
        EXPECT_EQ(set->chooseFolder(), 0);
    });
    set->observers().add(u"chooseFolder", [&] {
        seen.push_back("chooseFolder");
        EXPECT_EQ(set->replaceFile(), 1);
    });
    set->setValueForKey(std::make_shared<NSNumber>(true), u"replaceFile");
    EXPECT_EQ(seen, (std::vector<std::string>{"chooseFolder", "replaceFile"}));
}

TEST(ResizeSet, turningReplaceFileOffLeavesChooseFolderAsItIs) {
    const auto set = makeSet(u"Web", {{u"chooseFolder", true}});
    set->setReplaceFile(0);
    EXPECT_EQ(set->chooseFolder(), 1);
    set->setReplaceFile(2); // a yes, but not exactly YES
    EXPECT_EQ(set->replaceFile(), 2);
    EXPECT_EQ(set->chooseFolder(), 1);
}

TEST(ResizeSet, keyValueCodingReachesEveryFieldAndRaisesForAnythingElse) {
    ResizeSet set;
    for (const ResizeSet::Field& field : ResizeSet::fields())
        EXPECT_NO_THROW(set.setValueForKey(set.valueForKey(NSString::fromUTF8(field.key)),
                                           NSString::fromUTF8(field.key)));
    EXPECT_THROW(set.valueForKey(u"colour"), NSException);
    EXPECT_THROW(set.setValueForKey(nullptr, u"width"), NSException);
    EXPECT_THROW(set.setValueForKey(NSString(u"wide").object(), u"width"), NSException);
    EXPECT_THROW(set.setValueForKey(std::make_shared<NSNumber>(3), u"name"), NSException);
}

TEST(ResizeSet, aRefusedValueLeavesTheFieldAndItsObserversAlone) {
    const auto set = makeSet(u"Web");
    int changes = 0;
    set->observers().add(u"name", [&] { ++changes; });
    EXPECT_THROW(set->setValueForKey(std::make_shared<NSNumber>(3), u"name"), NSException);
    EXPECT_EQ(set->name(), NSString(u"Web"));
    EXPECT_EQ(changes, 0);
    set->setValueForKey(nullptr, u"name");
    EXPECT_FALSE(set->name().has_value());
}

TEST(ResizeSet, aChosenFolderIsStoredWhenThePersonSaysOK) {
    const WithFakePanel fake;
    FakePanel::answer = NSOKButton;
    const auto set = makeSet(u"Web");
    int changes = 0;
    set->observers().add(u"chosenFolderPath", [&] { ++changes; });
    set->chooseFolder(nullptr);
    EXPECT_EQ(set->chosenFolderPath(), NSString(u"/chosen/folder"));
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(FakePanel::asked.contains(u"\"Web\"")) << FakePanel::asked.utf8();
}

TEST(ResizeSet, thePanelOffersOneFolderWhichMayBeNewAndNoFiles) {
    const WithFakePanel fake;
    makeSet(u"Web")->chooseFolder(nullptr);
    EXPECT_EQ(FakePanel::allowed, "folders new ");
}

TEST(ResizeSet, aCancelledPanelLeavesTheSetUnchanged) {
    const WithFakePanel fake;
    FakePanel::answer = NSCancelButton;
    const auto set = makeSet(u"Web");
    set->chooseFolder(nullptr);
    EXPECT_FALSE(set->chosenFolderPath().has_value());
}

TEST(ResizeSet, aSheetThatEndsWithOKStoresItsFolderToo) {
    const auto set = makeSet(u"Web");
    FakePanel panel;
    set->didEndOpenSheet(panel, NSCancelButton, nullptr);
    EXPECT_FALSE(set->chosenFolderPath().has_value());
    set->didEndOpenSheet(panel, NSOKButton, nullptr);
    EXPECT_EQ(set->chosenFolderPath(), NSString(u"/chosen/folder"));
}

} // namespace kestrine
