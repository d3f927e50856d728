#include "platform/foundation/NSBundle.h"
#include "tests/support/SourceFolder.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;

class BundleTest : public ::testing::Test {
protected:
    BundleTest() {
        folder.write("English.lproj/Localizable.strings", "hello = Hello; only = English;");
        folder.write("English.lproj/Extra.strings", "hello = Extra;");
        folder.write("Japanese.lproj/Localizable.strings", "\"hello\" = \"\xe3\x81\x82\";");
        folder.write("Japanese.lproj/Broken.strings", "hello = Hello; x");
    }

    NSBundle bundle(const Environment& environment = {}) const {
        return NSBundle(folder.path().string(), environment);
    }

    TemporaryFolder folder;
};

TEST_F(BundleTest, theDefaultTableIsLocalizable) {
    EXPECT_EQ(bundle().localizedString(u"hello", u""), NSString(u"Hello"));
    EXPECT_EQ(bundle().localizedString(u"hello", u"", u"Extra"), NSString(u"Extra"));
}

TEST_F(BundleTest, aMissingKeyGivesTheFallbackOrTheKey) {
    EXPECT_EQ(bundle().localizedString(u"missing", u""), NSString(u"missing"));
    EXPECT_EQ(bundle().localizedString(u"missing"), NSString(u"missing"));
    EXPECT_EQ(bundle().localizedString(u"missing", u"fallback"), NSString(u"fallback"));
    EXPECT_EQ(bundle().localizedString(u"hello", u"fallback", u"NoTable"), NSString(u"fallback"));
}

TEST_F(BundleTest, theFirstLocaleVariableThatIsSetSelectsTheLanguage) {
    struct Case {
        Environment environment;
        const char16_t* text;
    };
    const Case cases[] = {{Environment{}, u"Hello"},
                          {Environment{{"LANG", "ja_JP.UTF-8"}}, u"あ"},
                          {Environment{{"LANG", "ja"}}, u"あ"},
                          {Environment{{"LANG", "ja.utf8"}}, u"あ"},
                          {Environment{{"LANG", "de_DE.UTF-8"}}, u"Hello"},
                          {Environment{{"LANG", "jam_JM"}}, u"Hello"},
                          {Environment{{"LANG", "ja_JP.UTF-8"}, {"LC_MESSAGES", "C"}}, u"Hello"},
                          {Environment{{"LANG", "C"}, {"LC_MESSAGES", "ja_JP"}}, u"あ"},
                          {Environment{{"LANG", "ja"}, {"LC_MESSAGES", "ja"}, {"LC_ALL", "en_GB"}}, u"Hello"},
                          {Environment{{"LANG", "ja_JP"}, {"LC_ALL", ""}}, u"あ"}};
    for (const auto& [environment, text] : cases)
        EXPECT_EQ(bundle(environment).localizedString(u"hello"), NSString(text));
}

TEST_F(BundleTest, aKeyMissingInTheLanguageIsNotTakenFromEnglish) {
    EXPECT_EQ(bundle(Environment{{"LANG", "ja_JP"}}).localizedString(u"only"), NSString(u"only"));
}

TEST_F(BundleTest, aTableMissingInTheLanguageIsTakenFromEnglish) {
    EXPECT_EQ(bundle(Environment{{"LANG", "ja_JP"}}).localizedString(u"hello", u"", u"Extra"),
              NSString(u"Extra"));
}

TEST_F(BundleTest, aMalformedTableCountsAsEmpty) {
    EXPECT_EQ(bundle(Environment{{"LANG", "ja_JP"}}).localizedString(u"hello", u"", u"Broken"),
              NSString(u"hello"));
}

TEST_F(BundleTest, aTableIsReadOnce) {
    NSBundle bundle = this->bundle();
    EXPECT_EQ(bundle.localizedString(u"hello"), NSString(u"Hello"));
    folder.write("English.lproj/Localizable.strings", "hello = Changed;");
    EXPECT_EQ(bundle.localizedString(u"hello"), NSString(u"Hello"));
}

TEST(NSBundle, anInstalledProgramHasItsResourcesInShare) {
    const TemporaryFolder folder;
    folder.write("usr/share/kestrine/English.lproj/x", "");
    folder.write("usr/share/English.lproj/x", "");
    EXPECT_EQ(resourceFolderForProgram(folder / "usr/bin/kestrine"), folder / "usr/share/kestrine");
}

TEST(NSBundle, aProgramInABuildFolderHasItsResourcesInTheSourceTree) {
    const TemporaryFolder folder;
    folder.write("tree/share/English.lproj/x", "");
    EXPECT_EQ(resourceFolderForProgram(folder / "tree/build/dev/bin/kestrine"), folder / "tree/share");
    EXPECT_EQ(resourceFolderForProgram(folder / "tree/build/kestrine"), folder / "tree/share");
    EXPECT_EQ(resourceFolderForProgram(folder / "other/bin/kestrine"), "");
}

TEST(NSBundle, withoutResourcesEveryKeyIsItsOwnText) {
    NSBundle bundle("", Environment{});
    EXPECT_EQ(bundle.localizedString(u"hello"), NSString(u"hello"));
}

TEST(NSBundle, theShippedTablesHaveThePanelsMessageInBothLanguages) {
    const NSString key = u"Please choose directory for \"%@\"";
    NSBundle english(inSourceFolder("share"), Environment{});
    NSBundle japanese(inSourceFolder("share"), Environment{{"LANG", "ja_JP.UTF-8"}});
    EXPECT_EQ(english.localizedString(key, u"fallback"), key);
    EXPECT_NE(japanese.localizedString(key, u"fallback"), key);
    EXPECT_TRUE(japanese.localizedString(key, u"fallback").contains(u"\"%@\""));
}

} // namespace
} // namespace kestrine
