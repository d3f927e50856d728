#include "platform/foundation/LocalTime.h"
#include "tests/support/LocalZone.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::LocalZone;

/// The string converted to a date in the zone and back.
std::string shown(const char* zone, const char* text) {
    const LocalZone local(zone);
    const auto date = dateFromText(NSString::fromUTF8(text));
    return date ? isoText(*date) : "nil";
}

TEST(LocalTime, datesAreReadInLocalTimeInBothForms) {
    EXPECT_EQ(shown("Asia/Tokyo", "2008-01-02 10:11:12"), "2008-01-02T10:11:12+09:00");
    EXPECT_EQ(shown("Asia/Tokyo", "2008:01:02 10:11:12"), "2008-01-02T10:11:12+09:00");
    EXPECT_EQ(shown("UTC", "1969-12-31 23:59:59"), "1969-12-31T23:59:59+00:00");
    EXPECT_EQ(shown("America/St_Johns", "2008-07-02 10:11:12"), "2008-07-02T10:11:12-02:30");
    const LocalZone tokyo("Asia/Tokyo");
    EXPECT_EQ(dateFromText(u"1970-01-01 09:00:00")->time_since_epoch().count(), 0);
}

TEST(LocalTime, aSkippedTimeIsMovedForward) {
    EXPECT_EQ(shown("Europe/Berlin", "2024-03-31 01:59:59"), "2024-03-31T01:59:59+01:00");
    EXPECT_EQ(shown("Europe/Berlin", "2024-03-31 02:30:00"), "2024-03-31T03:30:00+02:00");
    EXPECT_EQ(shown("Europe/Berlin", "2024-03-31 03:00:00"), "2024-03-31T03:00:00+02:00");
    EXPECT_EQ(shown("Australia/Lord_Howe", "2024-10-06 02:10:00"), "2024-10-06T02:40:00+11:00");
}

TEST(LocalTime, anAmbiguousTimeIsTheFirstOne) {
    EXPECT_EQ(shown("Europe/Berlin", "2024-10-27 01:59:59"), "2024-10-27T01:59:59+02:00");
    EXPECT_EQ(shown("Europe/Berlin", "2024-10-27 02:30:00"), "2024-10-27T02:30:00+02:00");
    EXPECT_EQ(shown("Europe/Berlin", "2024-10-27 03:00:00"), "2024-10-27T03:00:00+01:00");
    EXPECT_EQ(shown("America/New_York", "2024-11-03 01:30:00"), "2024-11-03T01:30:00-04:00");
}

TEST(LocalTime, aResultDoesNotDependOnEarlierCalls) {
    for (const char* before : {"2024-07-01 00:00:00", "2024-01-01 00:00:00"}) {
        (void)shown("Europe/Berlin", before);
        EXPECT_EQ(shown("Europe/Berlin", "2024-10-27 02:30:00"), "2024-10-27T02:30:00+02:00");
        EXPECT_EQ(shown("Europe/Berlin", "2024-03-31 02:30:00"), "2024-03-31T03:30:00+02:00");
    }
}

TEST(LocalTime, aSkippedDayIsMovedToTheNextDay) {
    EXPECT_EQ(shown("Pacific/Apia", "2011-12-29 12:00:00"), "2011-12-29T12:00:00-10:00");
    EXPECT_EQ(shown("Pacific/Apia", "2011-12-30 12:00:00"), "2011-12-31T12:00:00+14:00");
    EXPECT_EQ(shown("Pacific/Apia", "2011-12-31 12:00:00"), "2011-12-31T12:00:00+14:00");
}

TEST(LocalTime, anOffsetWithSecondsIsRoundedDownToMinutes) {
    EXPECT_EQ(shown("America/New_York", "1880-01-01 12:00:00"), "1880-01-01T11:59:02-04:57");
}

TEST(LocalTime, datesThatDoNotExistAreRejected) {
    for (const char* text : {"2023-02-29 00:00:00", "2024-04-31 00:00:00", "2024-00-01 00:00:00",
                             "2024-13-01 00:00:00", "2024-01-00 00:00:00", "2024-01-01 24:00:00",
                             "2024-01-01 00:60:00", "2024-01-01 00:00:60", "0000-01-01 00:00:00"})
        EXPECT_EQ(shown("UTC", text), "nil") << text;
    EXPECT_EQ(shown("UTC", "2024-02-29 23:59:59"), "2024-02-29T23:59:59+00:00");
    EXPECT_EQ(shown("UTC", "0001-01-01 00:00:00"), "0001-01-01T00:00:00+00:00");
    EXPECT_EQ(shown("UTC", "9999-12-31 23:59:59"), "9999-12-31T23:59:59+00:00");
}

TEST(LocalTime, otherFormsAreRejected) {
    for (const char* text :
         {"", "2024-01-01", "2024-01-01T00:00:00", "2024-01:01 00:00:00", "2024-1-01 00:00:000",
          "2024-01-01 00:00:00 ", " 2024-01-01 00:00:0", "2024-01-01 00-00-00", "2024-01-01 0a:00:00",
          "+024-01-01 00:00:00", "２024-01-01 00:00:00"})
        EXPECT_EQ(shown("UTC", text), "nil") << text;
}

} // namespace
} // namespace kestrine
