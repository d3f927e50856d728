#include "platform/foundation/NSUserDefaults.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using testing::TemporaryFolder;
namespace fs = std::filesystem;

const NSString domain = u"quov.Kestrine";
constexpr const char* fileName = "quov.Kestrine.plist";

std::string listWith(const std::string& base64) {
    return "<plist version=\"1.0\"><dict><key>a</key><data>" + base64
           + "</data><key>other</key><true/></dict></plist>";
}

/// A user with a home folder, and two configuration folders for all users, all in a temporary folder.
class PreferencesTest : public ::testing::Test {
protected:
    NSUserDefaults defaults(const std::string& configHome = "") const {
        return NSUserDefaults(Environment{{"HOME", folder / "home"},
                                          {"XDG_CONFIG_DIRS", folder / "xdg1" + ":" + folder / "xdg2"},
                                          {"XDG_CONFIG_HOME", configHome}});
    }

    std::string inConfigHome() const { return std::string("home/.config/") + fileName; }
    std::string inLibrary() const { return std::string("home/Library/Preferences/") + fileName; }

    TemporaryFolder folder;
};

TEST_F(PreferencesTest, thePlacesAreTheConfigHomeTheMacFolderAndTheSystemFolders) {
    const std::vector<DomainFile> expected{{folder / inConfigHome(), true},
                                           {folder / inLibrary(), true},
                                           {folder / "xdg1/quov.Kestrine.plist", false},
                                           {folder / "xdg2/quov.Kestrine.plist", false}};
    EXPECT_EQ(defaults().placesOfDomain(domain), expected);
}

TEST_F(PreferencesTest, theConfigHomeMayBeAnyAbsolutePath) {
    EXPECT_EQ(defaults("/c").placesOfDomain(domain).front().path, "/c/quov.Kestrine.plist");
    EXPECT_EQ(defaults("c").placesOfDomain(domain).front().path, folder / inConfigHome());
}

TEST_F(PreferencesTest, withoutAFileThereIsNoDomain) {
    EXPECT_EQ(defaults().fileOfDomain(domain), std::nullopt);
    EXPECT_EQ(defaults().persistentDomainForName(domain).failure().reason, Reason::notFound);
}

TEST_F(PreferencesTest, theFirstFileThatExistsIsRead) {
    folder.write("xdg2/quov.Kestrine.plist", listWith("AAAA"));
    EXPECT_EQ(defaults().persistentDomainForName(domain)->dataForKey(u"a")->bytes(), Bytes(3, 0));
    folder.write(inLibrary(), listWith("QUJD"));
    EXPECT_EQ(defaults().persistentDomainForName(domain)->dataForKey(u"a")->bytes(), bytesOf("ABC"));
    folder.write(inConfigHome(), listWith("REVG"));
    EXPECT_EQ(defaults().persistentDomainForName(domain)->dataForKey(u"a")->bytes(), bytesOf("DEF"));
    EXPECT_EQ(defaults().fileOfDomain(domain), (DomainFile{folder / inConfigHome(), true}));
}

TEST_F(PreferencesTest, aMalformedFileEndsTheSearch) {
    folder.write(inLibrary(), listWith("QUJD"));
    folder.write(inConfigHome(), "broken");
    EXPECT_EQ(defaults().persistentDomainForName(domain).failure().reason, Reason::malformed);
}

TEST_F(PreferencesTest, aFileThatCannotBeLookedUpEndsTheSearch) {
    folder.write(inConfigHome(), listWith("QUJD"));
    folder.write(inLibrary(), listWith("REVG"));
    fs::permissions(folder.path(), fs::perms(0755));
    fs::permissions(folder / "home/.config", fs::perms::none);
    testing::runAsOrdinaryUser([&] {
        EXPECT_EQ(defaults().persistentDomainForName(domain).failure().reason, Reason::notPermitted);
    });
    fs::permissions(folder / "home/.config", fs::perms(0700));
}

TEST_F(PreferencesTest, aFolderWithTheNameEndsTheSearch) {
    folder.write(inLibrary(), listWith("QUJD"));
    fs::create_directories(folder / inConfigHome());
    EXPECT_EQ(defaults().persistentDomainForName(domain).failure().reason, Reason::notRegularFile);
}

TEST_F(PreferencesTest, aLinkIsFollowedAndADanglingOneIsIgnored) {
    folder.write("elsewhere", listWith("QUJD"));
    folder.write(inLibrary(), listWith("REVG"));
    fs::create_directories(folder / "home/.config");
    fs::create_symlink(folder / "elsewhere", folder / inConfigHome());
    EXPECT_EQ(defaults().persistentDomainForName(domain)->dataForKey(u"a")->bytes(), bytesOf("ABC"));
    fs::remove(folder / "elsewhere");
    EXPECT_EQ(defaults().persistentDomainForName(domain)->dataForKey(u"a")->bytes(), bytesOf("DEF"));
}

TEST_F(PreferencesTest, aFileThatIsTooLongFails) {
    folder.write(inConfigHome(), std::string(16 * 1024 * 1024 + 1, ' '));
    EXPECT_EQ(defaults().persistentDomainForName(domain).failure().reason, Reason::tooLarge);
}

TEST_F(PreferencesTest, aNewDomainIsWrittenToTheConfigHomeWithItsFolders) {
    PropertyList list = PropertyList::empty();
    list.setData(u"a", bytesOf("new"));
    ASSERT_TRUE(defaults().setPersistentDomain(list, domain));
    EXPECT_EQ(defaults().persistentDomainForName(domain)->dataForKey(u"a")->bytes(), bytesOf("new"));
    EXPECT_TRUE(testing::readFile(folder / inConfigHome()).starts_with("bplist00"));
    struct stat status {};
    ASSERT_EQ(::stat((folder / "home/.config").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777u, 0700u);
}

TEST_F(PreferencesTest, theUsersFileIsReplacedInItsPlace) {
    folder.write(inLibrary(), listWith("QUJD"));
    Result<PropertyList> list = defaults().persistentDomainForName(domain);
    list->setData(u"a", bytesOf("changed"));
    ASSERT_TRUE(defaults().setPersistentDomain(*list, domain));
    EXPECT_FALSE(fs::exists(folder / inConfigHome()));
    const std::string written = testing::readFile(folder / inLibrary());
    EXPECT_TRUE(written.starts_with("<?xml")) << "the form is kept";
    EXPECT_NE(written.find("<key>other</key>"), std::string::npos) << "other keys are kept";
    EXPECT_EQ(defaults().persistentDomainForName(domain)->dataForKey(u"a")->bytes(), bytesOf("changed"));
}

TEST_F(PreferencesTest, aFileForAllUsersIsCopiedToTheUserAndNotChanged) {
    const std::string before = listWith("QUJD");
    folder.write("xdg1/quov.Kestrine.plist", before);
    Result<PropertyList> list = defaults().persistentDomainForName(domain);
    list->setData(u"a", bytesOf("mine"));
    ASSERT_TRUE(defaults().setPersistentDomain(*list, domain));
    EXPECT_EQ(testing::readFile(folder / "xdg1/quov.Kestrine.plist"), before);
    EXPECT_NE(testing::readFile(folder / inConfigHome()).find("<key>other</key>"), std::string::npos);
    EXPECT_EQ(defaults().persistentDomainForName(domain)->dataForKey(u"a")->bytes(), bytesOf("mine"));
}

} // namespace
} // namespace kestrine
