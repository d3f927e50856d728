#include "kestrinectl/convert/ConvertPictureSigns.h"

#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {

namespace {

using namespace std::string_view_literals;
using testing::bytesOf;

} // namespace

TEST(PictureSigns, extensionsOfPicturesAreRecognisedInAnyCase) {
    for (const char* name : {"a.jpg", "p/IMG_1.HEIC", "x.y.NeF", "a.webp"})
        EXPECT_TRUE(hasNameOfPicture(name)) << name;
    for (const char* name : {"jpg", "a.jpg.txt", "a.", "", "a.mov", "p.png/a"})
        EXPECT_FALSE(hasNameOfPicture(name)) << name;
}

TEST(PictureSigns, unsupportedFormatsAreRecognisedByTheirFirstBytes) {
    for (const auto head : {"\x76\x2f\x31\x01"sv, "DDS |.."sv, "gimp xcf v011"sv})
        EXPECT_TRUE(isForeignPicture(bytesOf(head))) << head;
}

TEST(PictureSigns, otherFilesAreNotRecognised) {
    for (const auto head : {""sv,
                            "\0\0\0\x18"
                            "ftypisom"sv,
                            "words"sv, "gimp"sv, "ftypheic"sv})
        EXPECT_FALSE(isForeignPicture(bytesOf(head))) << head;
}

} // namespace kestrine
