#include "platform/host/process/UserDatabase.h"
#include "tests/support/IsolatedProcess.h"

#include <gtest/gtest.h>
#include <pwd.h>
#include <unistd.h>

namespace kestrine {
namespace {

constexpr uid_t unlistedUser = 54321;

TEST(UserDatabase, aUserHasAHomeFolder) {
    const passwd* root = ::getpwuid(0);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(homeFolderOfUser(root->pw_name), root->pw_dir);
    EXPECT_EQ(homeFolderOfUser("no-such-user"), std::nullopt);
}

TEST(UserDatabase, aNameIsNotCutAtAZeroByte) {
    const passwd* root = ::getpwuid(0);
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(homeFolderOfUser(root->pw_name + std::string("\0x", 2)), std::nullopt);
    EXPECT_EQ(homeFolderOfUser(""), std::nullopt);
}

TEST(UserDatabase, anUnlistedUserHasNoHomeFolder) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can become another user";
    testing::runIsolated([] {
        ASSERT_EQ(::getpwuid(unlistedUser), nullptr);
        ASSERT_EQ(::setuid(unlistedUser), 0);
        EXPECT_EQ(homeFolderOfCurrentUser(), std::nullopt);
    });
}

} // namespace
} // namespace kestrine
