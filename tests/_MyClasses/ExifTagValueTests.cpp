// Converting a directory entry to a value: types, counts, positions, strings.
#include "platform/foundation/NSFileHandle.h"
#include "tests/_MyClasses/ExifReading.h"

#include <gtest/gtest.h>

namespace kestrine::testing {
namespace {

constexpr std::uint16_t anyTag = 0x4001;

/// The stored value of `field`.
std::string stored(const ExifField& field) {
    return shown(ReadFile(ExifContent{.ifd0 = {field}})->tagDictionary(), "IFD0", anyTag);
}

Bytes repeated(std::size_t count) { return Bytes(count, 7); }

struct ValueCase {
    ExifField field;
    std::string value;
};

void expectStored(const std::vector<ValueCase>& cases) {
    for (const auto& [field, value] : cases)
        EXPECT_EQ(stored(field), value) << "type " << field.type << ", count " << field.count;
}

TEST(ExifTagValue, upToFourBytesAreInTheEntryAndMoreAtTheOffset) {
    for (const std::uint16_t type : std::initializer_list<std::uint16_t>{1, 6, 7})
        expectStored({{exifBytes(anyTag, {}, type), "bytes"},
                      {exifBytes(anyTag, {1, 2, 3}, type), "bytes 01 02 03"},
                      {exifBytes(anyTag, {1, 2, 3, 4}, type), "bytes 01 02 03 04"},
                      {exifBytes(anyTag, {1, 2, 3, 4, 255}, type), "bytes 01 02 03 04 ff"}});
}

TEST(ExifTagValue, fiveLettersAreAtTheOffsetAndTwoInTheEntry) {
    expectStored({{exifText(anyTag, "Kappa"), "text Kappa"}, {exifText(anyTag, "Ka"), "text Ka"}});
    EXPECT_EQ(exifText(anyTag, "Kappa").count, 6u);
    EXPECT_EQ(exifText(anyTag, "Ka").count, 3u);
}

TEST(ExifTagValue, aStringEndsAtTheFirstZeroByteAndWithinTheEntry) {
    expectStored({{exifBytes(anyTag, {'a', 'b', 'c', 'd'}, 2), "text abcd"},
                  {{anyTag, 2, 2, {'a', 'b', 'c', 'd'}}, "text abcd"},
                  {{anyTag, 2, 0, {'a', 0, 'c', 0}}, "text a"},
                  {exifBytes(anyTag, {'a', 'b', 0, 'd', 'e', 0}, 2), "text ab"},
                  {exifBytes(anyTag, {'a', 'b', 'c', 'd', 'e'}, 2), "text abcde"}});
}

TEST(ExifTagValue, validUTF8IsDecodedAsUTF8AndOtherBytesAsMacRoman) {
    expectStored({{exifText(anyTag, "caf\xc3\xa9"), "text café"},
                  {exifText(anyTag, "\xf0\x9f\x93\xb7 1"), "text 📷 1"},
                  {exifText(anyTag, "caf\x8e au lait"), "text café au lait"},
                  {exifText(anyTag, "\xa9 Me"), "text © Me"},
                  {exifText(anyTag, "\xc3\xa9\xdb"), "text √©€"},
                  {exifText(anyTag, "\xed\xa0\x80 lone"), "text Ì†Ä lone"}});
}

TEST(ExifTagValue, shortsKeepTheirSign) {
    expectStored({{exifShorts(anyTag, {6}), "u16 6"},
                  {exifShorts(anyTag, {6, 65535}), "u16 6, u16 65535"},
                  {exifShorts(anyTag, {1, 2, 65535}), "u16 1, u16 2, u16 65535"},
                  {exifSignedShorts(anyTag, {-1, -2, -3}), "i16 -1, i16 -2, i16 -3"}});
}

TEST(ExifTagValue, theFirstOfInlineSignedShortsIsUnsigned) {
    expectStored({{exifSignedShorts(anyTag, {-1, -1}), "u16 65535, i16 -1"},
                  {exifSignedShorts(anyTag, {-1}), "u16 65535"}});
}

TEST(ExifTagValue, longsKeepTheirSign) {
    expectStored({{exifLongs(anyTag, {4000000000}), "u32 4000000000"},
                  {exifLongs(anyTag, {1, 4000000000}), "u32 1, u32 4000000000"},
                  {exifSignedLongs(anyTag, {-5}), "i32 -5"},
                  {exifSignedLongs(anyTag, {-5, 70000}), "i32 -5, i32 70000"}});
}

TEST(ExifTagValue, rationalsAreFlatListsOfPairs) {
    expectStored({{exifRationals(anyTag, {72, 1}), "u32 72, u32 1"},
                  {exifRationals(anyTag, {1, 2, 3, 4000000000}), "u32 1, u32 2, u32 3, u32 4000000000"},
                  {exifSignedRationals(anyTag, {-1, 3}), "i32 -1, i32 3"}});
}

TEST(ExifTagValue, floatsAndDoublesKeepTheirWidth) {
    expectStored({{exifFloats(anyTag, {0.5f}), "f32 0.5"},
                  {exifFloats(anyTag, {-0.25f, 3e30f}), "f32 -0.25, f32 3e+30"},
                  {exifDoubles(anyTag, {0.1}), "f64 0.1"},
                  {exifDoubles(anyTag, {1e-300, -2}), "f64 1e-300, f64 -2"}});
}

TEST(ExifTagValue, aCountOfZeroHasNoSpecialMeaning) {
    expectStored({{{anyTag, 3, 0, {0, 9, 0, 8}}, "u16 9"},
                  {{anyTag, 8, 0, {0xff, 0xff, 0, 8}}, "u16 65535"},
                  {{anyTag, 4, 0, {0, 0, 1, 0}}, "u32 256"},
                  {{anyTag, 11, 0, {0x3f, 0x80, 0, 0}}, "f32 1"},
                  {{anyTag, 5, 0, {0, 0, 0, 8}}, ""},
                  {{anyTag, 12, 0, {0, 0, 0, 8}}, ""},
                  {{anyTag, 7, 0, {1, 2, 3, 4}}, "bytes"}});
}

TEST(ExifTagValue, anEntryOf300ValuesIsStoredAndOneOf301Dropped) {
    EXPECT_EQ(stored(exifBytes(anyTag, repeated(300))).size(), std::string("bytes").size() + 300 * 3);
    EXPECT_EQ(stored(exifBytes(anyTag, repeated(301))), "nil");
    EXPECT_NE(stored(exifRationals(anyTag, std::vector<std::uint32_t>(600, 1))), "nil");
    EXPECT_EQ(stored(exifRationals(anyTag, std::vector<std::uint32_t>(602, 1))), "nil");
    EXPECT_EQ(stored(ExifField{anyTag, 3, 0xffffffff, {0, 1, 0, 1}}), "nil");
}

TEST(ExifTagValue, unknownTypesAreSkipped) {
    for (const std::uint16_t type : std::initializer_list<std::uint16_t>{0, 13, 14, 129, 65535}) {
        const ReadFile file(ExifContent{.ifd0 = {{anyTag, type, 1, {0, 0, 0, 8}}, exifShorts(0x4002, {2})}});
        EXPECT_EQ(shown(file->tagDictionary(), "IFD0", anyTag), "nil") << type;
        EXPECT_EQ(shown(file->tagDictionary(), "IFD0", 0x4002), "u16 2") << type;
    }
}

TEST(ExifTagValue, littleEndianValuesAreRead) {
    const auto reader = ExifTagReader::initWithPath(u"photo.jpg");
    IFDDictionary directory;
    const auto registered = [&](const IfdEntry& entry) {
        reader->registTagData(&entry, directory, false);
        return shown(&directory.at("0112"));
    };
    EXPECT_EQ(registered({0x0112, 3, 1, {6, 0, 0, 0}}), "u16 6");
    EXPECT_EQ(registered({0x0112, 8, 2, {0xff, 0xff, 0xfe, 0xff}}), "u16 65535, i16 -2");
    EXPECT_EQ(registered({0x0112, 4, 1, {0, 1, 0, 0}}), "u32 256");
    EXPECT_EQ(registered({0x0112, 11, 1, {0, 0, 0x80, 0x3f}}), "f32 1");
    EXPECT_EQ(directory.size(), 1u);
}

TEST(ExifTagValue, withoutAnEntryNothingIsRegistered) {
    IFDDictionary directory;
    ExifTagReader::initWithPath(u"photo.jpg")->registTagData(nullptr, directory, true);
    EXPECT_TRUE(directory.empty());
}

TEST(ExifTagValue, anOffsetToLittleEndianValuesIsLittleEndian) {
    Bytes content(100);
    content[12 + 20] = 7; // offsets count from the TIFF header, at 12 without another segment
    const ReadFile file{ByteView(content)};
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(NSString::fromUTF8(file.path()));
    file->setFileHandle(handle.get());
    IFDDictionary directory;
    const IfdEntry entry{0x0112, 4, 2, {20, 0, 0, 0}};
    file->registTagData(&entry, directory, false);
    EXPECT_EQ(shown(&directory.at("0112")), "u32 7, u32 0");
}

TEST(ExifTagValue, onlyTheValuesAreConverted) {
    const auto reader = ExifTagReader::initWithPath(u"photo.jpg");
    IFDDictionary directory;
    const IfdEntry entry{0x010f, 3, 2, {0, 6, 1, 0}};
    reader->registTagData(&entry, directory, true);
    EXPECT_EQ(shown(&directory.at("010F")), "u16 6, u16 256");
}

} // namespace
} // namespace kestrine::testing
