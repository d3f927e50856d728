#include "models/NameTemplate.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

const NameFacts facts = {"IMG_1", "jpg", "Web", 480, 320, 7, 120, "2024-06-01"};

std::string nameBy(const std::string& text, const NameFacts& about = facts) {
    const Result<NameTemplate> names = NameTemplate::parse(text);
    return names ? names->nameFor(about) : "refused: " + names.failure().text;
}

TEST(NameTemplate, fillsInEveryField) {
    EXPECT_EQ(nameBy("{stem}-{width}x{height}.{ext}"), "IMG_1-480x320.jpg");
    EXPECT_EQ(nameBy("{set}/{date}/{n}.{ext}"), "Web/2024-06-01/007.jpg");
    EXPECT_EQ(nameBy("cover"), "cover");
}

TEST(NameTemplate, takesDoubledBracesAsBraces) { EXPECT_EQ(nameBy("{{{stem}}}.{ext}"), "{IMG_1}.jpg"); }

TEST(NameTemplate, refusesUnknownFieldsAndSingleBraces) {
    EXPECT_EQ(nameBy("{name}"),
              "refused: there is no field {name}; the fields are {stem}, {ext}, {set}, {width}, "
              "{height}, {n}, {date}");
    EXPECT_EQ(nameBy("{stem"), "refused: a { without a } after it; {{ stands for a brace");
    EXPECT_EQ(nameBy("stem}"), "refused: a } without a { before it; }} stands for a brace");
}

TEST(NameTemplate, refusesNamesOutsideOfTheirFolder) {
    for (const char* text : {"", "/{stem}", "../{stem}", "a/../../{stem}", "{stem}/", "a//b", ".", "a/./b"})
        EXPECT_TRUE(nameBy(text).starts_with("refused: a name must not be empty")) << text;
}

TEST(NameTemplate, factsNeverLeadToAnotherFolder) {
    NameFacts hostile = facts;
    hostile.stem = "..";
    hostile.set = "../../etc";
    EXPECT_EQ(nameBy("{stem}/x", hostile), "__/x");
    EXPECT_EQ(nameBy("{set}/x", hostile), ".._.._etc/x");
    hostile.set = "";
    EXPECT_EQ(nameBy("{set}/x", hostile), "_/x");
}

TEST(NameTemplate, knowsWhetherItDependsOnThePicture) {
    EXPECT_FALSE(NameTemplate::parse("{stem}-{n}.{ext}")->dependsOnPicture());
    for (const char* text : {"{width}", "{height}", "{date}"})
        EXPECT_TRUE(NameTemplate::parse(text)->dependsOnPicture()) << text;
}

} // namespace
} // namespace kestrine
