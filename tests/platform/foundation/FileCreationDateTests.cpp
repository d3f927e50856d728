#include "platform/foundation/FileCreationDate.h"

#include "platform/foundation/LocalTime.h"
#include "platform/host/files/ExtendedAttributes.h"
#include "tests/support/AttributeSupport.h"
#include "tests/support/LocalZone.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine::testing {
namespace {

class FileCreationDate : public ::testing::Test {
protected:
    void SetUp() override {
        if (!keepsAttributes(folder.write("probe", "")))
            GTEST_SKIP() << "the temporary folder's file system keeps no extended attributes";
    }

    const LocalZone zone{"Asia/Tokyo"};
    const TemporaryFolder folder;
};

TEST_F(FileCreationDate, isTheTextThatWasSetAndTheOtherDatesStay) {
    const std::string path = folder.write("photo.jpg", "");
    const auto modified = std::filesystem::last_write_time(path);
    EXPECT_EQ(fileCreationDateText(path), std::nullopt);
    ASSERT_TRUE(setFileCreationDate(path, std::chrono::sys_seconds(std::chrono::seconds(1199236272))));
    EXPECT_EQ(fileCreationDateText(path), "2008-01-02T10:11:12+09:00");
    EXPECT_EQ(std::filesystem::last_write_time(path), modified);
}

TEST_F(FileCreationDate, ofAFileThatIsNotThereCannotBeSet) {
    EXPECT_EQ(setFileCreationDate(folder / "absent", {}).failure().reason, Reason::notFound);
    EXPECT_EQ(fileCreationDateText(folder / "absent"), std::nullopt);
}

// The block that file servers keep.

Bytes dosBlock(std::string_view text, std::uint8_t version, std::uint8_t flags, std::size_t size) {
    Bytes block(text.begin(), text.end());
    block.resize((block.size() + 2) / 2 * 2);
    block.insert(block.end(), {version, 0, version, 0});
    block.resize((block.size() + 3) / 4 * 4);
    block.push_back(flags);
    block.resize(size, 0x77);
    return block;
}

std::uint64_t numberAt(const Bytes& block, std::size_t position) {
    std::uint64_t number = 0;
    for (std::size_t i = 8; i-- > 0;)
        number = number << 8 | block.at(position + i);
    return number;
}

struct DosCase {
    std::string_view text;
    std::uint8_t version;
    std::size_t size, timePosition, flagsPosition;
};

TEST_F(FileCreationDate, theTimeThatServersKeepFollowsInEveryVersionOfTheirBlock) {
    constexpr std::uint64_t expected = (11644473600 + 1199236272ull) * 10000000;
    const DosCase cases[] = {{"", 3, 52, 36, 8},      {"0x20", 3, 56, 40, 12}, {"", 4, 32, 24, 8},
                             {"0x20", 4, 36, 28, 12}, {"", 5, 24, 16, 8},      {"0x20", 5, 28, 20, 12}};
    for (const DosCase& dos : cases) {
        const std::string path = folder.write("photo.jpg", "");
        const Bytes before = dosBlock(dos.text, dos.version, 0x01, dos.size);
        ASSERT_TRUE(setExtendedAttribute(path, dosAttribute, before));
        ASSERT_TRUE(setFileCreationDate(path, std::chrono::sys_seconds(std::chrono::seconds(1199236272))));
        Bytes after = *getExtendedAttribute(path, dosAttribute);
        EXPECT_EQ(numberAt(after, dos.timePosition), expected) << int(dos.version) << dos.text;
        EXPECT_EQ(after.at(dos.flagsPosition), 0x11);
        after.at(dos.flagsPosition) = 0x01;
        std::copy_n(before.begin() + dos.timePosition, 8, after.begin() + dos.timePosition);
        EXPECT_EQ(after, before) << "nothing else is touched";
    }
}

TEST_F(FileCreationDate, theOldVersionsHaveNoFlagsForIt) {
    for (const auto& [version, position] : {std::pair{1, 32}, std::pair{2, 36}}) {
        const std::string path = folder.write("photo.jpg", "");
        ASSERT_TRUE(setExtendedAttribute(path, dosAttribute, dosBlock("", std::uint8_t(version), 0x20, 80)));
        ASSERT_TRUE(setFileCreationDate(path, std::chrono::sys_seconds()));
        const Bytes after = *getExtendedAttribute(path, dosAttribute);
        EXPECT_EQ(numberAt(after, std::size_t(position)), 116444736000000000u);
        EXPECT_EQ(after.at(8), 0x20);
    }
}

TEST_F(FileCreationDate, aBlockThatIsShortOrUnknownStaysAndADateBefore1601IsNotPutThere) {
    const std::string path = folder.write("photo.jpg", "");
    const auto now = std::chrono::sys_seconds(std::chrono::seconds(1199236272));
    const auto early = std::chrono::sys_seconds(std::chrono::seconds(-11644473601));
    Bytes whole = dosBlock("", 5, 1, 24);
    std::vector<std::pair<Bytes, std::chrono::sys_seconds>> cases{
        {dosBlock("", 6, 1, 99), now}, {dosBlock("", 0, 1, 99), now}, {whole, early}, {bytesOf("0x20"), now}};
    for (std::size_t size = 0; size < whole.size(); ++size)
        cases.emplace_back(Bytes(whole.begin(), whole.begin() + size), now);
    for (const auto& [block, date] : cases) {
        ASSERT_TRUE(setExtendedAttribute(path, dosAttribute, block));
        ASSERT_TRUE(setFileCreationDate(path, date));
        EXPECT_EQ(*getExtendedAttribute(path, dosAttribute), block) << block.size();
    }
}

TEST_F(FileCreationDate, withoutAServersBlockNoneIsMade) {
    const std::string path = folder.write("photo.jpg", "");
    ASSERT_TRUE(setFileCreationDate(path, std::chrono::sys_seconds()));
    EXPECT_EQ(getExtendedAttribute(path, dosAttribute).failure().reason, Reason::notFound);
}

} // namespace
} // namespace kestrine::testing
