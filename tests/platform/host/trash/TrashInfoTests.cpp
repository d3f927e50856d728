#include "platform/host/trash/TrashInfo.h"
#include "tests/support/IsolatedProcess.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(TrashInfo, numbersAreInsertedBeforeTheExtension) {
    struct Row {
        const char* original;
        unsigned attempt;
        const char* name;
    };
    for (const Row& row :
         {Row{"a.jpg", 1, "a.jpg"}, Row{"a.jpg", 2, "a.2.jpg"}, Row{"a.jpg", 13, "a.13.jpg"},
          Row{"a", 2, "a.2"}, Row{"a.tar.gz", 2, "a.tar.2.gz"}, Row{".bashrc", 2, ".bashrc.2"},
          Row{"a.", 2, "a.2."}, Row{" ", 2, " .2"}, Row{"\xFF.jpg", 2, "\xFF.2.jpg"}})
        EXPECT_EQ(trashName(row.original, row.attempt, 245), row.name);
}

TEST(TrashInfo, longNamesAreShortenedBeforeTheExtension) {
    const std::string longName = std::string(251, 'n') + ".jpg";
    EXPECT_EQ(trashName(longName, 1, 245), std::string(241, 'n') + ".jpg");
    EXPECT_EQ(trashName(longName, 2, 245), std::string(239, 'n') + ".2.jpg");
    EXPECT_EQ(trashName(std::string(245, 'n'), 1, 245), std::string(245, 'n'));
}

TEST(TrashInfo, aVeryLongExtensionIsShortenedAsPartOfTheName) {
    const std::string name = "a." + std::string(253, 'x');
    EXPECT_EQ(trashName(name, 1, 245), name.substr(0, 245));
    EXPECT_EQ(trashName(name, 2, 245), name.substr(0, 243) + ".2");
}

TEST(TrashInfo, shorteningDoesNotCutCharacters) {
    std::string name;
    while (name.size() < 252)
        name += "\xE3\x81\x82"; // three bytes each
    EXPECT_EQ(trashName(name, 1, 245), name.substr(0, 243));
    EXPECT_EQ(trashName(std::string(255, '\x80'), 1, 245), std::string(245, '\x80'))
        << "these are not characters";
}

TEST(TrashInfo, reservedBytesAreEncoded) {
    EXPECT_EQ(percentEncoded("/home/me/100% fun.jpg"), "/home/me/100%25%20fun.jpg");
    EXPECT_EQ(percentEncoded("a\nb=[]#?;&\\\""), "a%0Ab%3D%5B%5D%23%3F%3B%26%5C%22");
    EXPECT_EQ(percentEncoded("\xC3\xA9\xFF"), "%C3%A9%FF");
    EXPECT_EQ(percentEncoded("aZ09-_.!~*'()/+"), "aZ09-_.!~*'()/+");
    EXPECT_EQ(percentEncoded(""), "");
}

TEST(TrashInfo, theRecordHasPathAndLocalTime) {
    testing::runIsolated([] {
        ::setenv("TZ", "IST-5:30", 1); // five and a half hours east
        EXPECT_EQ(trashInfoText("/a b", 1'700'000'000),
                  "[Trash Info]\nPath=/a%20b\nDeletionDate=2023-11-15T03:43:20\n");
        ::setenv("TZ", "UTC", 1);
        EXPECT_EQ(trashInfoText("/a", 0), "[Trash Info]\nPath=/a\nDeletionDate=1970-01-01T00:00:00\n");
    });
}

TEST(TrashInfo, theOriginalPathIsReadBack) {
    for (const std::string path : {"/a b", "/100% fun", "/\xFF\n", "/%41%4"})
        EXPECT_EQ(originalPathIn(trashInfoText(path, 0)), path);
    EXPECT_EQ(originalPathIn("[Trash Info]\nPath=/50%\n"), "/50%") << "as careless programs write it";
    EXPECT_EQ(originalPathIn("[Trash Info]\n"), std::nullopt);
}

} // namespace
} // namespace kestrine
