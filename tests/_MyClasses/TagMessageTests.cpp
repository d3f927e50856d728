#include "_MyClasses/Class/ExifTag/TagMessage.h"

#include "_MyClasses/Class/ExifTag/ExifQuestions.h"
#include "tests/_MyClasses/ExifReading.h"

#include <limits>
#include <random>

namespace kestrine {
namespace {

TagDictionaryPointer dictionaryOf(std::map<std::string, IFDDictionary> directories) {
    TagDictionary tags;
    for (auto& [name, directory] : directories)
        tags[name] = std::make_shared<const IFDDictionary>(std::move(directory));
    return std::make_shared<const TagDictionary>(std::move(tags));
}

TagDictionaryPointer allKindsOfValues() {
    const NumberList numbers = {NSNumber(true),
                                NSNumber(std::int8_t{-1}),
                                NSNumber(std::uint8_t{255}),
                                NSNumber(std::int16_t{-2}),
                                NSNumber(std::uint16_t{65535}),
                                NSNumber(std::int32_t{-3}),
                                NSNumber(std::uint32_t{4'000'000'000}),
                                NSNumber(std::int64_t{-4}),
                                NSNumber(std::uint64_t{5}),
                                NSNumber(0.5F),
                                NSNumber(-0.25)};
    return dictionaryOf({{"IFD0",
                          {{"0001", ByteBlock{1, 2, 3}},
                           {"0002", ByteBlock()},
                           {"0003", NSString(u"a\u3042\U0001f600")},
                           {"0004", NSString()},
                           {"0005", numbers},
                           {"0006", NumberList()}}},
                         {"IFD1", {}}});
}

/// Every value of a dictionary as a string.
std::string shownAll(const TagDictionaryPointer& tags) {
    std::string shown;
    for (const auto& [name, directory] : *tags) {
        shown += name + "\n";
        for (const auto& [key, value] : *directory)
            shown += " " + key + " " + testing::shown(&value) + "\n";
    }
    return shown;
}

TEST(TagMessage, carriesEveryKindOfValueUnchanged) {
    const std::optional<ReadTags> received = readTagsIn(bytesOf({18, allKindsOfValues()}));
    ASSERT_TRUE(received && received->tags);
    EXPECT_EQ(shownAll(received->tags), shownAll(allKindsOfValues()));
    EXPECT_EQ(received->app1Offset, 18);
}

TEST(TagMessage, distinguishesNilFromAnEmptyDictionary) {
    const auto nil = readTagsIn(bytesOf({0, nullptr})), empty = readTagsIn(bytesOf({0, dictionaryOf({})}));
    ASSERT_TRUE(nil && empty);
    EXPECT_EQ(nil->tags, nullptr);
    ASSERT_NE(empty->tags, nullptr);
    EXPECT_TRUE(empty->tags->empty());
}

TEST(TagMessage, thatIsCutOffOrGoesOnIsRefused) {
    Bytes bytes = bytesOf({0, allKindsOfValues()});
    for (std::size_t size = 0; size < bytes.size(); ++size)
        EXPECT_FALSE(readTagsIn(ByteView(bytes).first(size))) << size;
    bytes.push_back(0);
    EXPECT_FALSE(readTagsIn(bytes));
}

TEST(TagMessage, beyondTheLimitsOfTheReaderIsRefused) {
    const auto isAccepted = [](const TagValue& value) {
        return readTagsIn(bytesOf({0, dictionaryOf({{"IFD0", {{"0001", value}}}})})).has_value();
    };
    EXPECT_TRUE(isAccepted(NumberList(600, NSNumber(1.0))));
    EXPECT_FALSE(isAccepted(NumberList(601, NSNumber(1.0))));
    EXPECT_FALSE(isAccepted(ByteBlock(2401)));
    std::map<std::string, IFDDictionary> directories;
    for (int i = 0; i < 6; ++i)
        directories[std::to_string(i)] = {};
    EXPECT_FALSE(readTagsIn(bytesOf({0, dictionaryOf(directories)})));
    IFDDictionary directory;
    for (int i = 0; i < 300; ++i)
        directory.insert_or_assign(std::to_string(i), ByteBlock());
    EXPECT_FALSE(readTagsIn(bytesOf({0, dictionaryOf({{"IFD0", directory}})})));
}

TEST(TagMessage, withChangedBytesIsReadWithoutHarm) {
    std::mt19937 random(1);
    const Bytes bytes = bytesOf({0, allKindsOfValues()});
    std::size_t accepted = 0;
    for (int i = 0; i < 5000; ++i) {
        Bytes changed = bytes;
        changed[random() % changed.size()] = static_cast<std::uint8_t>(random());
        accepted += readTagsIn(changed) ? 1 : 0;
    }
    EXPECT_GT(accepted, 0u);
}

TEST(ExifQuestions, giveTheTagsOfAFileThatIsNoPicture) {
    const Bytes file = testing::jpegFile({.ifd0 = {testing::exifText(0x010f, "Maker")}}); // segments only
    const std::optional<ReadTags> read = readTagsIn(*tagsOf(readerOfBytes(file)));
    ASSERT_TRUE(read && read->tags);
    EXPECT_EQ(testing::shown(read->tags, IFD0Name, 0x010f), "text Maker");
    EXPECT_EQ(readTagsIn(*tagsOf(readerOfBytes(Bytes{1, 2, 3})))->tags, nullptr);
}

} // namespace
} // namespace kestrine
