// The accepted files, the position of the EXIF segment, and the directories.
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileHandle.h"
#include "platform/imageio/exif/CarriedExif.h"
#include "tests/_MyClasses/ExifReading.h"

#include <gtest/gtest.h>

namespace kestrine::testing {
namespace {

constexpr std::uint16_t orientationTag = 0x0112;
constexpr std::uint16_t makerNoteTag = 0x927c;

ExifContent orientationContent(std::uint16_t orientation, ExifOrder order = ExifOrder::bigEndian) {
    return {.order = order, .ifd0 = {exifShorts(orientationTag, {orientation})}};
}

std::vector<ExifField> manyFields(std::size_t count) {
    std::vector<ExifField> fields;
    for (std::size_t i = 0; i < count; ++i)
        fields.push_back(exifShorts(static_cast<std::uint16_t>(0x4000 + i), {1}));
    return fields;
}

/// The name and the reason of the exception that `action` raises.
template <class Action>
std::string raised(Action action) {
    try {
        action();
    } catch (const NSException& exception) {
        return exception.name() + ": " + exception.reason();
    }
    return "nothing";
}

// Opening

TEST(ExifTagReader, onlyNamesInJpgAndJpegGetAReader) {
    for (const char16_t* path : {u"photo.jpg", u"photo.JPG", u"/a/photo.Jpeg", u"a.b.jpeg"})
        EXPECT_NE(ExifTagReader::initWithPath(path), nullptr) << NSString(path).utf8();
    for (const char16_t* path :
         {u"photo.jpe", u"photo.tif", u"photo", u"jpg", u".jpg", u"photo.jpg.png", u""})
        EXPECT_EQ(ExifTagReader::initWithPath(path), nullptr) << NSString(path).utf8();
}

TEST(ExifTagReader, aNewReaderHasItsPathAndHasReadNothing) {
    const auto reader = ExifTagReader::initWithPath(u"/nowhere/photo.jpg");
    EXPECT_EQ(reader->path(), u"/nowhere/photo.jpg");
    EXPECT_EQ(reader->app1Offset(), 0);
}

TEST(ExifTagReader, aFileThatCannotBeOpenedKeepsAnEmptyDictionary) {
    const TemporaryFolder folder;
    const auto reader = ExifTagReader::initWithPath(NSString::fromUTF8(folder / "photo.jpg"));
    const TagDictionaryPointer tags = reader->tagDictionary();
    ASSERT_NE(tags, nullptr);
    EXPECT_TRUE(tags->empty());
    folder.write("photo.jpg", jpegFile(orientationContent(6)));
    EXPECT_EQ(reader->tagDictionary(), tags);
    EXPECT_FALSE(reader->imageDirectionNumber());
    EXPECT_EQ(reader->IFD0Dict(), nullptr);
}

TEST(ExifTagReader, aJpegWithoutExifHasNilAndIsReadAtEveryCall) {
    const ReadFile file(jpegFile({jfifSegment()}));
    EXPECT_EQ(file->tagDictionary(), nullptr);
    file.write(jpegFile(orientationContent(6)));
    EXPECT_EQ(shown(file->tagDictionary(), "IFD0", orientationTag), "u16 6");
}

TEST(ExifTagReader, aFileIsParsedOnceAndReturnsTheSameDictionary) {
    const ReadFile file(orientationContent(6));
    const TagDictionaryPointer tags = file->tagDictionary();
    file.remove();
    EXPECT_EQ(file->tagDictionary(), tags);
    EXPECT_EQ(shown(file->imageDirectionNumber()), "u16 6");
}

// Finding the segment

TEST(ExifTagReader, exifDirectlyAfterTheStartIsAtOffset0) {
    const ReadFile file(orientationContent(6));
    EXPECT_EQ(namesIn(file->tagDictionary()), "IFD0");
    EXPECT_EQ(file->app1Offset(), 0);
}

TEST(ExifTagReader, exifAfterASegmentOf18BytesIsAtOffset18) {
    const ReadFile file(jpegFile({jfifSegment(), exifSegment(exifBlock(orientationContent(6)))}));
    EXPECT_EQ(shown(file->imageDirectionNumber()), "u16 6");
    EXPECT_EQ(file->app1Offset(), 18);
}

TEST(ExifTagReader, exifAfterALongerOrASecondSegmentIsNotFound) {
    const Bytes exif = exifSegment(exifBlock(orientationContent(6)));
    const std::vector<std::vector<Bytes>> arrangements{
        {jpegSegment(0xe0, Bytes(15)), exif},
        {jfifSegment(), jpegSegment(0xfe, Bytes(4)), exif},
        {jpegSegment(0xfe, Bytes(2)), exif},
    };
    for (const auto& segments : arrangements) {
        const ReadFile file(jpegFile(segments));
        EXPECT_EQ(file->tagDictionary(), nullptr);
        EXPECT_EQ(file->app1Offset(), 18);
    }
}

TEST(ExifTagReader, anotherMarkerIdentifierOrStartIsNotExif) {
    const Bytes good = jpegFile(orientationContent(6));
    struct {
        std::size_t position;
        std::uint8_t byte;
    } const changes[] = {
        {0, 0xfe}, {1, 0xd9}, {2, 0}, {3, 0xe2}, {6, 'e'}, {9, 'F'}, {10, ' '}, {11, 1},
    };
    for (const auto& [position, byte] : changes) {
        Bytes changed = good;
        changed[position] = byte;
        EXPECT_EQ(ReadFile(changed)->tagDictionary(), nullptr) << position;
    }
}

TEST(ExifTagReader, theLengthOfTheSegmentIsIgnored) {
    Bytes changed = jpegFile(orientationContent(6));
    changed[4] = changed[5] = 0;
    EXPECT_EQ(shown(ReadFile(changed)->imageDirectionNumber()), "u16 6");
}

// The TIFF header

TEST(ExifTagReader, bigEndianOrientation6IsAnUnsignedShort) {
    EXPECT_EQ(shown(ReadFile(orientationContent(6))->imageDirectionNumber()), "u16 6");
}

TEST(ExifTagReader, littleEndianDataGivesNilFromEverything) {
    const ReadFile file(orientationContent(6, ExifOrder::littleEndian));
    EXPECT_EQ(file->tagDictionary(), nullptr);
    EXPECT_EQ(file->IFD0Dict(), nullptr);
    EXPECT_EQ(file->IFD1Dict(), nullptr);
    EXPECT_EQ(file->subIFDDict(), nullptr);
    EXPECT_FALSE(file->imageDirectionNumber());
}

TEST(ExifTagReader, anotherMagicNumberGivesNil) {
    Bytes changed = jpegFile(orientationContent(6));
    changed[15] = 43;
    EXPECT_EQ(ReadFile(changed)->tagDictionary(), nullptr);
}

TEST(ExifTagReader, headersCanBeReadOneByOne) {
    const ReadFile file(orientationContent(6));
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(NSString::fromUTF8(file.path()));
    file->setFileHandle(handle.get());
    ExifFileHeader fileHeader{};
    ASSERT_TRUE(file->getFileHeader(&fileHeader));
    EXPECT_EQ(fileHeader.marker, (std::array<std::uint8_t, 2>{0xff, 0xe1}));
    TiffHeader tiffHeader{};
    ASSERT_TRUE(file->getTiffHeader(&tiffHeader));
    EXPECT_EQ(tiffHeader.magic, 42);
    EXPECT_EQ(tiffHeader.ifd0Offset, 8u);
}

TEST(ExifTagReader, anInvalidTiffHeaderHasNoOffset) {
    const ReadFile file(orientationContent(6, ExifOrder::littleEndian));
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(NSString::fromUTF8(file.path()));
    file->setFileHandle(handle.get());
    TiffHeader header{{'x', 'x'}, 1, 1};
    EXPECT_FALSE(file->getTiffHeader(&header));
    EXPECT_EQ(header.byteOrder, (std::array<char, 2>{'I', 'I'}));
    EXPECT_EQ(header.ifd0Offset, 0u);
}

TEST(ExifTagReader, withoutAHandleThereIsNothingToRead) {
    const ReadFile file(orientationContent(6));
    EXPECT_FALSE(file->getTags());
}

TEST(ExifTagReader, afterParsingTheReaderHasNoHandle) {
    const ReadFile file(orientationContent(6));
    ASSERT_NE(file->tagDictionary(), nullptr);
    EXPECT_FALSE(file->getTags());
}

TEST(ExifTagReader, headersThatCannotBeReadAreCleared) {
    const ReadFile file(orientationContent(6));
    ExifFileHeader fileHeader{{1, 2}, 3, {'E', 'x'}};
    EXPECT_FALSE(file->getFileHeader(&fileHeader));
    EXPECT_EQ(fileHeader.marker, (std::array<std::uint8_t, 2>{}));
    EXPECT_EQ(fileHeader.length, 0);
    EXPECT_EQ(fileHeader.identifier[0], 0);
    TiffHeader tiffHeader{{'M', 'M'}, 0x2a00, 8};
    EXPECT_FALSE(file->getTiffHeader(&tiffHeader));
    EXPECT_EQ(tiffHeader.byteOrder, (std::array<char, 2>{}));
    EXPECT_EQ(tiffHeader.magic, 0);
}

TEST(ExifTagReader, aMissingRecordRaisesInvalidParameter) {
    const ReadFile file(orientationContent(6));
    EXPECT_EQ(raised([&] { file->getFileHeader(nullptr); }),
              "ETRInvalidParameterException: - [ExifFileReader getFileHeader:] Invalid parameter.");
    EXPECT_EQ(raised([&] { file->getTiffHeader(nullptr); }),
              "ETRInvalidParameterException: - [ExifFileReader getTiffHeader:] Invalid parameter.");
}

// Directories

TEST(ExifTagReader, aDirectoryOf299EntriesIsReadAndOneOf300OrNoneIsNot) {
    const ExifContent full{.ifd0 = manyFields(298), .exifSubIFD = manyFields(299)};
    const ReadFile file(full);
    EXPECT_EQ(namesIn(file->tagDictionary()), "ExifSubIFD IFD0");
    EXPECT_EQ(file->IFD0Dict()->size(), 299u);
    EXPECT_EQ(file->subIFDDict()->size(), 299u);

    const ReadFile tooFull(ExifContent{.ifd0 = manyFields(299), .exifSubIFD = manyFields(1)});
    ASSERT_NE(tooFull->tagDictionary(), nullptr);
    EXPECT_EQ(namesIn(tooFull->tagDictionary()), "");

    Bytes none = jpegFile(ExifContent{.ifd0 = manyFields(1), .exifSubIFD = manyFields(1)});
    none[12 + 8 + 1] = 0;
    EXPECT_EQ(namesIn(ReadFile(none)->tagDictionary()), "");
}

TEST(ExifTagReader, directoriesBelowAnInvalidOneAreNotRead) {
    const ReadFile file(ExifContent{
        .ifd0 = manyFields(1), .exifSubIFD = manyFields(299), .interoperabilityIFD = {exifText(1, "R98")}});
    EXPECT_EQ(namesIn(file->tagDictionary()), "IFD0");
}

TEST(ExifTagReader, interoperabilityIsReachedFromTheExifDirectory) {
    const ReadFile file(
        ExifContent{.exifSubIFD = manyFields(1), .interoperabilityIFD = {exifText(1, "R98")}});
    EXPECT_EQ(namesIn(file->tagDictionary()), "ExifSubIFD IFD0 InteroperabilityIFD");
    EXPECT_EQ(shown(file->tagDictionary(), "InteroperabilityIFD", 1), "text R98");
}

TEST(ExifTagReader, theNextDirectoryIsNotFoundThroughABigEndianOffset) {
    const ReadFile file(ExifContent{.ifd0 = manyFields(1), .ifd1 = manyFields(1)});
    EXPECT_EQ(namesIn(file->tagDictionary()), "IFD0");
    EXPECT_EQ(file->IFD1Dict(), nullptr);
}

TEST(ExifTagReader, theNextDirectoryIsFoundThroughALittleEndianOffset) {
    const ReadFile file(ExifContent{.ifd0 = manyFields(1),
                                    .ifd1 = {exifShorts(0x882a, {9})},
                                    .interoperabilityIFD2 = {exifText(1, "THM")},
                                    .nextOffsetIsLittleEndian = true});
    EXPECT_EQ(namesIn(file->tagDictionary()), "IFD0 IFD1 InteroperabilityIFD2");
    EXPECT_EQ(shown(file->tagDictionary(), "IFD1", 0x882a), "u16 9");
    EXPECT_EQ(shown(file->tagDictionary(), "InteroperabilityIFD2", 1), "text THM");
}

TEST(ExifTagReader, theNextOffsetOfAnEmptyDirectoryFollowsItsCount) {
    // Header, IFD0 at 8 without entries, next offset 14 in host order, one entry at 14.
    Bytes block{'M', 'M', 0, 42, 0, 0, 0, 8, 0, 0, 14, 0, 0, 0};
    const Bytes directory{0, 1, 0x01, 0x12, 0, 3, 0, 0, 0, 1, 0, 6, 0, 0};
    block.insert(block.end(), directory.begin(), directory.end());
    const ReadFile file(jpegFile({exifSegment(block)}));
    EXPECT_EQ(namesIn(file->tagDictionary()), "IFD1");
    EXPECT_EQ(shown(file->tagDictionary(), "IFD1", orientationTag), "u16 6");
}

TEST(ExifTagReader, aMakerNoteIsLeftOutOfTheExifDirectoryOnly) {
    const ExifField note = exifBytes(makerNoteTag, {1, 2, 3});
    const ReadFile file(ExifContent{.ifd0 = {note}, .exifSubIFD = {note, exifShorts(0x8827, {100})}});
    EXPECT_EQ(shown(file->tagDictionary(), "IFD0", makerNoteTag), "bytes 01 02 03");
    EXPECT_EQ(shown(file->tagDictionary(), "ExifSubIFD", makerNoteTag), "nil");
    EXPECT_EQ(shown(file->tagDictionary(), "ExifSubIFD", 0x8827), "u16 100");
}

TEST(ExifTagReader, ofTwoEntriesWithOneTagTheLaterWins) {
    const ReadFile file(
        ExifContent{.ifd0 = {exifShorts(orientationTag, {6}), exifShorts(orientationTag, {8})}});
    EXPECT_EQ(shown(file->imageDirectionNumber()), "u16 8");
    EXPECT_EQ(file->IFD0Dict()->size(), 1u);
}

TEST(ExifTagReader, aPointerWithoutNumbersIsIgnored) {
    for (const ExifField& pointer :
         {exifText(0x8769, "ab"), exifBytes(0x8769, {0, 0, 0, 8}), exifRationals(0x8769, {})}) {
        const ReadFile file(ExifContent{.ifd0 = {pointer, exifShorts(orientationTag, {6})}});
        EXPECT_EQ(namesIn(file->tagDictionary()), "IFD0");
        EXPECT_EQ(shown(file->imageDirectionNumber()), "u16 6");
    }
}

TEST(ExifTagReader, aPointerToItsOwnDirectoryDoesNotLoop) {
    const ReadFile file(ExifContent{.ifd0 = {exifLongs(0x8769, {8}), exifLongs(0xa005, {8})}});
    EXPECT_EQ(namesIn(file->tagDictionary()), "ExifSubIFD IFD0 InteroperabilityIFD");
}

// Ends of files and failures

TEST(ExifTagReader, aTruncatedFileIsReadAsIfFollowedByZeros) {
    const Bytes whole =
        jpegFile(ExifContent{.ifd0 = {exifText(0x010f, "Kappa"), exifShorts(orientationTag, {6})},
                             .exifSubIFD = {exifRationals(0x829d, {28, 10})}});
    // Where the magic number, the count of IFD0, and the type and value of its second entry end.
    constexpr std::size_t magicEnd = 16, countEnd = 22, typeEnd = 38, valueEnd = 44;
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const ReadFile file(ByteView(whole).first(size));
        const char* orientation = size < typeEnd ? "nil" : size < valueEnd ? "u16 0" : "u16 6";
        EXPECT_EQ(file->tagDictionary() != nullptr, size >= magicEnd) << size;
        EXPECT_EQ(file->IFD0Dict() != nullptr, size >= countEnd) << size;
        EXPECT_EQ(shown(file->imageDirectionNumber()), orientation) << size;
    }
}

TEST(ExifTagReader, aValueAfterTheEndOfTheFileIsZeros) {
    const Bytes farAway{0x7f, 0xff, 0xff, 0xff};
    const ReadFile file(ExifContent{
        .ifd0 = {{1, 3, 3, farAway}, {2, 2, 9, farAway}, {3, 7, 5, farAway}, {4, 12, 1, farAway}}});
    const TagDictionaryPointer tags = file->tagDictionary();
    EXPECT_EQ(shown(tags, "IFD0", 1), "u16 0, u16 0, u16 0");
    EXPECT_EQ(shown(tags, "IFD0", 2), "text ");
    EXPECT_EQ(shown(tags, "IFD0", 3), "bytes 00 00 00 00 00");
    EXPECT_EQ(shown(tags, "IFD0", 4), "f64 0");
}

TEST(ExifTagReader, aClosedHandleHasNothingToRead) {
    const ReadFile file(orientationContent(6));
    const auto handle = NSFileHandle::fileHandleForReadingAtPath(NSString::fromUTF8(file.path()));
    handle->closeFile();
    file->setFileHandle(handle.get());
    EXPECT_FALSE(file->getTags());
}

TEST(ExifTagReader, aFolderCannotBeOpened) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder / "photo.jpg");
    const auto reader = ExifTagReader::initWithPath(NSString::fromUTF8(folder / "photo.jpg"));
    ASSERT_NE(reader->tagDictionary(), nullptr);
    EXPECT_TRUE(reader->tagDictionary()->empty());
}

// Accessors of this class

TEST(ExifTagReader, theClassOperationsReturnNilForMissingTags) {
    const ReadFile file(orientationContent(6));
    const TagDictionaryPointer tags = file->tagDictionary();
    EXPECT_EQ(ExifTagReader::getSubDict(tags.get(), "IFD0"), file->IFD0Dict());
    EXPECT_EQ(ExifTagReader::getSubDict(tags.get(), "ExifSubIFD"), nullptr);
    EXPECT_EQ(ExifTagReader::getSubDict(nullptr, "IFD0"), nullptr);
    EXPECT_EQ(shown(ExifTagReader::getTagData(tags.get(), "IFD0", orientationTag)), "u16 6");
    EXPECT_EQ(ExifTagReader::getTagData(tags.get(), "IFD0", 1), nullptr);
    EXPECT_EQ(ExifTagReader::getTagData(tags.get(), "IFD1", orientationTag), nullptr);
}

TEST(ExifTagReader, anOrientationWithoutNumbersIsNone) {
    EXPECT_FALSE(ReadFile(ExifContent{.ifd0 = manyFields(1)})->imageDirectionNumber());
    EXPECT_FALSE(ReadFile(ExifContent{.ifd0 = {exifRationals(orientationTag, {})}})->imageDirectionNumber());
}

TEST(ExifTagReader, anOrientationThatIsNotAListRaisesInvalidArgument) {
    for (const ExifField& field : {exifText(orientationTag, "6"), exifBytes(orientationTag, {6})}) {
        const ReadFile file(ExifContent{.ifd0 = {field}});
        EXPECT_EQ(raised([&] { (void)file->imageDirectionNumber(); }).substr(0, 27),
                  "NSInvalidArgumentException:");
    }
}

TEST(ExifTagReader, whatAnOutputCarriesFromALittleEndianSourceIsRead) {
    const Bytes source = exifBlock({.order = ExifOrder::littleEndian,
                                    .ifd0 = {exifText(0x010f, "Kappa"), exifShorts(orientationTag, {6})},
                                    .exifSubIFD = {exifRationals(0x829d, {28, 10})},
                                    .interoperabilityIFD = {exifText(1, "R98")}});
    const ReadFile file(jpegFile({jfifSegment(), exifSegment(carriedExif(source, {1200, 800, true}))}));
    const TagDictionaryPointer tags = file->tagDictionary();
    EXPECT_EQ(namesIn(tags), "ExifSubIFD IFD0 InteroperabilityIFD");
    EXPECT_EQ(shown(tags, "IFD0", 0x010f), "text Kappa");
    EXPECT_EQ(shown(file->imageDirectionNumber()), "u16 1");
    EXPECT_EQ(shown(tags, "ExifSubIFD", 0x829d), "u32 28, u32 10");
    EXPECT_EQ(shown(tags, "ExifSubIFD", 0xa002), "u32 1200");
    EXPECT_EQ(shown(tags, "InteroperabilityIFD", 1), "text R98");
}

TEST(ExifTagReader, theExceptionNamesEqualTheirConstants) {
    EXPECT_STREQ(ETRUnknownException, "ETRUnknownException");
    EXPECT_STREQ(ETRLowMemoryException, "ETRLowMemoryException");
    EXPECT_STREQ(ETRInvalidParameterException, "ETRInvalidParameterException");
    EXPECT_STREQ(ETRFileFormatException, "ETRFileFormatException");
    EXPECT_STREQ(ETRFileIOException, "ETRFileIOException");
}

} // namespace
} // namespace kestrine::testing
