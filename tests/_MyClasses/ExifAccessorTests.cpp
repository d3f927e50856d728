// Camera values as numbers and as strings. The strings tables are empty here, so keys show themselves.
#include "platform/foundation/NSBundle.h"
#include "platform/host/process/Environment.h"
#include "tests/_MyClasses/ExifReading.h"
#include "tests/_MyClasses/Raised.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace kestrine::testing {
namespace {

constexpr std::uint32_t largest = std::numeric_limits<std::uint32_t>::max();

/// A reader for a file with these fields, without strings tables.
class Camera {
public:
    explicit Camera(std::vector<ExifField> exif, std::vector<ExifField> ifd0 = {},
                    std::vector<ExifField> ifd1 = {})
        : file_(ExifContent{.ifd0 = std::move(ifd0),
                            .exifSubIFD = std::move(exif),
                            .ifd1 = std::move(ifd1),
                            .nextOffsetIsLittleEndian = true}) {
        file_->setBundle(&noTexts_);
    }

    ExifTagReader* operator->() const { return &*file_; }

private:
    NSBundle noTexts_{"", Environment{}};
    ReadFile file_;
};

Camera rationalCamera(std::uint16_t tag, std::uint32_t numerator, std::uint32_t denominator) {
    return Camera({exifRationals(tag, {numerator, denominator})});
}

// Support operations

TEST(ExifAccessor, aRationalIsDividedInSinglePrecision) {
    const NumberList list{NSNumber(std::uint32_t{28}), NSNumber(std::uint32_t{10})};
    EXPECT_EQ(ExifTagReader::rationalValue(&list), 2.8f);
    EXPECT_EQ(shown(ExifTagReader::rationalNumber(&list)), "f32 2.8");
    EXPECT_EQ(ExifTagReader::rationalValue(&list, u"f/%.1f!"), NSString(u"f/2.8!"));
    EXPECT_EQ(ExifTagReader::rationalValue(&list, u"%.10f"), NSString(u"2.7999999523"));
}

TEST(ExifAccessor, bothNumbersOfARationalAreRoundedToSinglePrecisionFirst) {
    const NumberList list{NSNumber(std::uint32_t{16777217}), NSNumber(std::uint32_t{1})};
    EXPECT_EQ(ExifTagReader::rationalValue(&list), 16777216.0f);
}

TEST(ExifAccessor, anAbsentRationalIsZeroAndNilAsNumberAndText) {
    EXPECT_EQ(ExifTagReader::rationalValue(nullptr), 0.0f);
    EXPECT_FALSE(ExifTagReader::rationalNumber(nullptr));
    EXPECT_FALSE(ExifTagReader::rationalValue(nullptr, u"%f"));
}

TEST(ExifAccessor, aRationalOfOneNumberIsOutOfRange) {
    const NumberList list{NSNumber(std::uint32_t{28})};
    EXPECT_EQ(raisedName([&] { (void)ExifTagReader::rationalValue(&list); }), "NSRangeException");
    EXPECT_EQ(raisedName([&] { (void)ExifTagReader::rationalNumber(&list); }), "NSRangeException");
    EXPECT_EQ(raisedName([&] { (void)ExifTagReader::rationalValue(&list, u"%f"); }), "NSRangeException");
}

TEST(ExifAccessor, theStringOfAValueHasTheKeyFollowedByTheInteger) {
    const TemporaryFolder folder;
    folder.write("English.lproj/ExifTag.strings", "flash16 = Off; flash0 = Nil;");
    NSBundle bundle(folder.path().string(), Environment{});
    const Camera camera({});
    EXPECT_EQ(camera->stringValueForKey(u"flash", NSNumber(std::uint16_t{16})), NSString(u"flash16"));
    camera->setBundle(&bundle);
    EXPECT_EQ(camera->stringValueForKey(u"flash", NSNumber(std::uint16_t{16})), NSString(u"Off"));
    EXPECT_EQ(camera->stringValueForKey(u"flash", NSNumber(-1.5f)), NSString(u"flash-1"));
    EXPECT_EQ(camera->stringValueForKey(u"flash", std::nullopt), NSString(u"Nil"));
}

// Values

TEST(ExifAccessor, fNumber28By10Is2Point8) {
    const Camera camera = rationalCamera(0x829d, 28, 10);
    EXPECT_EQ(shown(camera->fNumberNumber()), "f32 2.8");
    EXPECT_EQ(camera->fNumber(), NSString(u"f/2.8"));
}

TEST(ExifAccessor, apertureValue3IsTheThirdPowerOfTheRootOf2) {
    const Camera camera = rationalCamera(0x9202, 3, 1);
    EXPECT_EQ(camera->lensApertureNumber()->value(), NSNumber::Value(std::pow(1.4142135623730951, 3.0)));
    EXPECT_EQ(camera->lensAperture(), NSString(u"f/2.8"));
}

TEST(ExifAccessor, theLargestApertureFollowsTheSameRule) {
    const Camera camera = rationalCamera(0x9205, 3, 1);
    EXPECT_EQ(camera->maxApertureNumber()->value(), NSNumber::Value(std::pow(1.4142135623730951, 3.0)));
    EXPECT_EQ(camera->maxAperture(), NSString(u"f/2.8"));
}

TEST(ExifAccessor, shutterSpeedValue7IsA128thOfASecond) {
    const Camera camera = rationalCamera(0x9201, 7, 1);
    EXPECT_EQ(shown(camera->shutterSpeedNumber()), "f64 128");
    EXPECT_EQ(camera->shutterSpeed(), NSString(u"1/128 sec"));
}

TEST(ExifAccessor, exposureTimesAreShownAsPartsOfASecond) {
    EXPECT_EQ(rationalCamera(0x829a, 1, 125)->exposureTime(), NSString(u"1/125 sec"));
    EXPECT_EQ(rationalCamera(0x829a, 1, 1)->exposureTime(), NSString(u"1/1 sec"));
}

TEST(ExifAccessor, anExposureOf2SecondsIsShownAs1By0) {
    EXPECT_EQ(rationalCamera(0x829a, 2, 1)->exposureTime(), NSString(u"1/0 sec"));
    EXPECT_EQ(rationalCamera(0x829a, 2, 3)->exposureTime(), NSString(u"1/1 sec")) << "1.4999999...";
    EXPECT_EQ(rationalCamera(0x829a, 0, 1)->exposureTime(), NSString(u"1/inf sec"));
}

TEST(ExifAccessor, brightness5AtIso100Is10) {
    const Camera camera({exifSignedRationals(0x9203, {5, 1}), exifShorts(0x8827, {100})});
    EXPECT_EQ(shown(camera->brightnessNumber()), "f32 10");
    EXPECT_EQ(camera->brightness(), NSString(u"10.0 EV"));
}

TEST(ExifAccessor, brightnessWithoutIsoIsMinusInfinity) {
    const Camera camera({exifSignedRationals(0x9203, {5, 1})});
    EXPECT_EQ(shown(camera->brightnessNumber()), "f32 -inf");
    EXPECT_EQ(camera->brightness(), NSString(u"-inf EV"));
}

TEST(ExifAccessor, anIsoSpeedOfTheWrongTypeRaises) {
    const ExifField brightness = exifSignedRationals(0x9203, {5, 1});
    EXPECT_EQ(raisedName([&] {
                  (void)Camera({brightness, exifText(0x8827, "100")})->brightnessNumber();
              }),
              "NSInvalidArgumentException");
    EXPECT_EQ(raisedName([&] {
                  (void)Camera({brightness, exifRationals(0x8827, {})})->brightnessNumber();
              }),
              "NSRangeException");
    EXPECT_EQ(Camera({exifText(0x8827, "100")})->brightness(), NSString(u"N/A")) << "not read at all";
}

TEST(ExifAccessor, subjectDistancesShowTheirIntegerPartOnly) {
    EXPECT_EQ(rationalCamera(0x9206, 37, 10)->subjectDistance(), NSString(u"3.00 m"));
    EXPECT_EQ(shown(rationalCamera(0x9206, 37, 10)->subjectDistanceNumber()), "f32 3.7");
    EXPECT_EQ(rationalCamera(0x9206, largest, 1)->subjectDistance(), NSString(u"4294967296.00 m"));
    EXPECT_EQ(rationalCamera(0x9206, 1, 0)->subjectDistance(), NSString(u"inf m"));
    EXPECT_EQ(Camera({exifSignedRationals(0x9206, {-1, 2})})->subjectDistance(), NSString(u"0.00 m"));
}

TEST(ExifAccessor, aFocalLengthIn35mmFilmOf0IsNotAvailable) {
    EXPECT_EQ(Camera({exifShorts(0xa405, {0})})->focalLengthIn35mmFilm(), NSString(u"N/A"));
    EXPECT_EQ(Camera({exifShorts(0xa405, {50})})->focalLengthIn35mmFilm(), NSString(u"50mm"));
    EXPECT_EQ(shown(Camera({exifShorts(0xa405, {0})})->focalLengthIn35mmFilmNumber()), "u16 0");
}

TEST(ExifAccessor, theOtherNumbersHaveTheirFormats) {
    EXPECT_EQ(rationalCamera(0x920a, 1234, 100)->focalLength(), NSString(u"12.34 mm"));
    EXPECT_EQ(Camera({exifSignedRationals(0x9204, {-1, 3})})->exposureBias(), NSString(u"-0.33 EV"));
    EXPECT_EQ(rationalCamera(0x9102, 4, 1)->compressedBitsPerPixel(), NSString(u"4.0:1"));
    EXPECT_EQ(Camera({exifShorts(0x8827, {400})})->ISOSpeedRatings(), NSString(u"400"));
}

TEST(ExifAccessor, aDivisionOfZeroByZeroIsShownWithoutSign) {
    EXPECT_EQ(rationalCamera(0x829d, 0, 0)->fNumber(), NSString(u"f/nan"));
    EXPECT_EQ(rationalCamera(0x829a, 0, 0)->exposureTime(), NSString(u"1/nan sec"));
    EXPECT_EQ(Camera({exifSignedRationals(0x9204, {-1, 0})})->exposureBias(), NSString(u"-inf EV"));
}

// Digital zoom

TEST(ExifAccessor, aDigitalZoomOf0Or1IsUnused) {
    EXPECT_EQ(rationalCamera(0xa404, 0, 100)->digitalZoomRatio(), NSString(u"Unused"));
    EXPECT_EQ(rationalCamera(0xa404, 100, 100)->digitalZoomRatio(), NSString(u"Unused"));
}

TEST(ExifAccessor, aDigitalZoomIsShownAsItIsStored) {
    EXPECT_EQ(rationalCamera(0xa404, 3, 2)->digitalZoomRatio(), NSString(u"3/2"));
    EXPECT_EQ(rationalCamera(0xa404, 10000, 5000)->digitalZoomRatio(), NSString(u"10000/5000"));
    EXPECT_EQ(rationalCamera(0xa404, 3, largest)->digitalZoomRatio(), NSString(u"3/4294967295"))
        << "as a signed number the denominator is -1";
}

TEST(ExifAccessor, aDigitalZoomWithANumberAbove10000IsNotAvailable) {
    EXPECT_EQ(rationalCamera(0xa404, 20000, 1)->digitalZoomRatio(), NSString(u"N/A"));
    EXPECT_EQ(rationalCamera(0xa404, 1, 10001)->digitalZoomRatio(), NSString(u"N/A"));
    EXPECT_EQ(rationalCamera(0xa404, 0, 10001)->digitalZoomRatio(), NSString(u"N/A"));
}

TEST(ExifAccessor, aDigitalZoomOfOneNumberIsOutOfRange) {
    for (const std::uint16_t number : std::initializer_list<std::uint16_t>{3, 20000})
        EXPECT_EQ(raisedName([&] { (void)Camera({exifShorts(0xa404, {number})})->digitalZoomRatio(); }),
                  "NSRangeException");
    EXPECT_EQ(raisedName([] { (void)Camera({exifText(0xa404, "3/2")})->digitalZoomRatio(); }),
              "NSInvalidArgumentException");
}

// Enumerated values

TEST(ExifAccessor, flash16WithoutAStringShowsItsKey) {
    EXPECT_EQ(Camera({exifShorts(0x9209, {16})})->flash(), NSString(u"flash16"));
}

TEST(ExifAccessor, everyEnumeratedValueHasAKeyOfItsAccessorsName) {
    for (const std::uint16_t tag : std::initializer_list<std::uint16_t>{
             0x8822, 0x9207, 0x9208, 0x9209, 0xa301, 0xa403, 0xa407, 0xa408, 0xa409, 0xa40a, 0xa40c}) {
        const Camera camera({exifShorts(tag, {3})});
        int found = 0;
#define LOCALIZED(name, valueAccessor, key) found += camera->name() == u"" #name "3";
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
        EXPECT_EQ(found, 1) << std::hex << tag;
    }
}

// Tags and directories

TEST(ExifAccessor, everyValueAccessorReadsItsTagInItsDirectoryOnly) {
    constexpr std::uint16_t unrelatedTag = 0x0001;
    struct Row {
        const char* name;
        std::string_view directory;
        std::uint16_t tag;
        bool (*answers)(const Camera&);
    };
    const Row rows[] = {
#define VALUE(name, directory, tag, rule, Kind)                                                              \
    {#name, #directory, tag, [](const Camera& camera) { return bool(camera->name()); }},
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
    };
    for (const Row& row : rows) {
        const std::vector<ExifField> field{exifRationals(row.tag, {6, 1})},
            other{exifShorts(unrelatedTag, {1})};
        EXPECT_EQ(row.answers(Camera(other, field, other)), row.directory == "IFD0") << row.name;
        EXPECT_EQ(row.answers(Camera(other, other, field)), row.directory == "IFD1") << row.name;
        EXPECT_EQ(row.answers(Camera(field, other, other)), row.directory == "subIFD") << row.name;
    }
}

TEST(ExifAccessor, theExposureModeIsTheExposureProgram) {
    const Camera camera({exifShorts(0x8822, {2}), exifShorts(0xa402, {1})});
    EXPECT_EQ(shown(camera->exposureModeNumber()), "u16 2");
}

TEST(ExifAccessor, theTimeZoneIsReadFromTheSecondDirectory) {
    const Camera camera({exifSignedShorts(0x882a, {1})}, {exifSignedShorts(0x882a, {2})},
                        {exifSignedShorts(0x882a, {9})});
    EXPECT_EQ(shown(camera->timeZoneOffset()), "u16 9");
    EXPECT_FALSE(Camera({exifSignedShorts(0x882a, {1})})->timeZoneOffset());
}

// Missing and invalid values

template <class Check>
void forEveryValue(ExifTagReader& reader, const Check& check) {
#define VALUE(name, directory, tag, rule, Kind) check(#name, [&] { return bool(reader.name()); });
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
}

template <class Check>
void forEveryDisplay(ExifTagReader& reader, const Check& check) {
#define FORMATTED(name, valueAccessor, format, valueFormatted) check(#name, [&] { return reader.name(); });
#define LOCALIZED(name, valueAccessor, key) check(#name, [&] { return reader.name(); });
#define COMPUTED(name) check(#name, [&] { return reader.name(); });
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
}

TEST(ExifAccessor, aFileWithoutExifHasNoValues) {
    const ReadFile withoutExif(jpegFile({jfifSegment()})),
        withOtherTags(ExifContent{.ifd0 = {exifShorts(1, {1})}});
    const ReadFile missing(ExifContent{});
    missing.remove();
    for (ExifTagReader* reader : {&*withoutExif, &*withOtherTags, &*missing}) {
        int values = 0, displays = 0;
        forEveryValue(*reader, [&](const char* name, const auto& answers) {
            ++values;
            EXPECT_FALSE(answers()) << name;
        });
        forEveryDisplay(*reader, [&](const char* name, const auto& text) {
            ++displays;
            EXPECT_EQ(text(), NSString(u"N/A")) << name;
        });
        EXPECT_EQ(values, 31);
        EXPECT_EQ(displays, 24);
    }
}

TEST(ExifAccessor, anEmptyListIsAnAbsentValue) {
    EXPECT_FALSE(Camera({exifRationals(0x829d, {})})->fNumberNumber());
    EXPECT_FALSE(Camera({exifRationals(0x9201, {})})->shutterSpeedNumber());
    EXPECT_FALSE(Camera({exifRationals(0x9203, {})})->brightnessNumber());
    EXPECT_FALSE(Camera({exifRationals(0x9207, {})})->meteringModeNumber());
    EXPECT_EQ(Camera({exifRationals(0x9202, {})})->lensAperture(), NSString(u"N/A"));
}

TEST(ExifAccessor, aValueThatIsNotAListRaisesInvalidArgumentExceptInRawAccessors) {
    struct Row {
        const char* name;
        std::string_view rule;
        std::uint16_t tag;
        void (*ask)(const Camera&);
    };
    const Row rows[] = {
#define VALUE(name, directory, tag, rule, Kind)                                                              \
    {#name, #rule, tag, [](const Camera& camera) { (void)camera->name(); }},
#include "_MyClasses/Class/ExifTag/ExifAccessorTable.h"
    };
    for (const Row& row : rows)
        for (const ExifField& field : {exifText(row.tag, "1"), exifBytes(row.tag, {1})})
            EXPECT_EQ(raisedName([&] { row.ask(Camera({field}, {field}, {field})); }),
                      row.rule == "raw" ? "nothing" : "NSInvalidArgumentException")
                << row.name;
}

TEST(ExifAccessor, aSceneTypeStoredAsUndefinedRaisesInvalidArgument) {
    const Camera camera({exifBytes(0xa301, {1})});
    EXPECT_EQ(raisedName([&] { (void)camera->sceneTypeNumber(); }), "NSInvalidArgumentException");
    EXPECT_EQ(raisedName([&] { (void)camera->sceneType(); }), "NSInvalidArgumentException");
}

TEST(ExifAccessor, rawAccessorsReturnTheStoredValue) {
    const Camera camera({exifText(0x9003, "2008:01:02 10:11:12"), exifShorts(0x9004, {7})},
                        {exifBytes(0x010f, {1, 2}), exifText(0x0110, "K 1")});
    EXPECT_EQ(shown(camera->dateTimeOriginal()), "text 2008:01:02 10:11:12");
    EXPECT_EQ(shown(camera->dateTimeDigitized()), "u16 7");
    EXPECT_EQ(shown(camera->maker()), "bytes 01 02");
    EXPECT_EQ(shown(camera->cameraName()), "text K 1");
}

} // namespace
} // namespace kestrine::testing
