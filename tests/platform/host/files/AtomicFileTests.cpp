#include "platform/host/files/FileStatus.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/PublishMechanisms.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <csignal>
#include <gmock/gmock.h>
#include <mutex>
#include <set>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using testing::readFile;
using testing::runAsOrdinaryUser;
using testing::runIsolated;
using testing::runWithOwnMounts;
using testing::TemporaryFolder;
using ::testing::UnorderedElementsAre;

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    return names;
}

mode_t rightsOf(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

/// a.jpg, a_1.jpg, a_2.jpg, ...
CandidatePaths numbered(const std::string& stem) {
    return [stem](unsigned attempt) {
        return stem + (attempt == 0 ? "" : "_" + std::to_string(attempt)) + ".jpg";
    };
}

CandidatePaths only(const std::string& path) {
    return [path](unsigned) { return path; };
}

/// Each test runs with each mechanism.
class PublishNewFile : public ::testing::TestWithParam<PublishMechanisms> {
protected:
    Result<std::string> publish(const CandidatePaths& candidates, const std::string& content = "new",
                                Durability durability = Durability::cached) {
        return publishNewFile(candidates, bytesOf(content), durability, GetParam());
    }

    const TemporaryFolder folder_;
};

TEST_P(PublishNewFile, theFirstCandidateIsUsedIfItIsFree) {
    for (const Durability durability : {Durability::cached, Durability::synced}) {
        const std::string path = folder_ / (durability == Durability::synced ? "synced.jpg" : "cached.jpg");
        EXPECT_EQ(*publish(only(path), "content", durability), path);
        EXPECT_EQ(readFile(path), "content");
    }
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("synced.jpg", "cached.jpg"));
}

TEST_P(PublishNewFile, namesInUseAreNeverReplaced) {
    folder_.write("a.jpg", "old");
    ASSERT_EQ(::mkdir((folder_ / "a_1.jpg").c_str(), 0700), 0);
    std::filesystem::create_symlink("nowhere", folder_ / "a_2.jpg");
    EXPECT_EQ(*publish(numbered(folder_ / "a")), folder_ / "a_3.jpg");
    EXPECT_EQ(readFile(folder_ / "a.jpg"), "old");
    EXPECT_TRUE(std::filesystem::is_symlink(folder_ / "a_2.jpg"));
    EXPECT_THAT(namesIn(folder_.path()), UnorderedElementsAre("a.jpg", "a_1.jpg", "a_2.jpg", "a_3.jpg"));
}

TEST_P(PublishNewFile, aGeneratorThatRepeatsItselfHasNoFurtherCandidates) {
    folder_.write("a.jpg", "old");
    EXPECT_EQ(publish(only(folder_ / "a.jpg")).failure().reason, Reason::alreadyExists);
    EXPECT_EQ(readFile(folder_ / "a.jpg"), "old");
    EXPECT_THAT(namesIn(folder_.path()), ElementsAre("a.jpg"));
}

TEST_P(PublishNewFile, aGeneratorMayRepeatACandidateTwice) {
    folder_.write("a.jpg", "old");
    folder_.write("b.jpg", "old");
    const auto candidates = [&](unsigned attempt) {
        return folder_ / (std::string(1, "aaabbbc"[attempt]) + ".jpg");
    };
    EXPECT_EQ(*publish(candidates), folder_ / "c.jpg");
}

TEST_P(PublishNewFile, namesAndContentMayHaveAnyBytes) {
    const std::string content("a\0b\xFF", 4);
    for (const char* name : {"n\nl", "100% %n", "\xFF\xFE", "-r", " "})
        EXPECT_EQ(readFile(*publish(only(folder_ / name), content)), content) << name;
    EXPECT_EQ(readFile(*publish(only(folder_ / "empty"), "")), "");
}

TEST_P(PublishNewFile, aNameMayHaveAtMost255Bytes) {
    EXPECT_TRUE(publish(only(folder_ / std::string(255, 'n'))));
    EXPECT_EQ(publish(only(folder_ / std::string(256, 'n'))).failure().reason, Reason::tooLarge);
    EXPECT_THAT(namesIn(folder_.path()), ElementsAre(std::string(255, 'n')));
}

TEST_P(PublishNewFile, aMissingFolderOrNameIsNotFound) {
    EXPECT_EQ(publish(only(folder_ / "none/a.jpg")).failure().reason, Reason::notFound);
    EXPECT_EQ(publish(only(folder_ / "")).failure().reason, Reason::notFound);
    EXPECT_EQ(publish(only(folder_ / std::string("a\0.jpg", 6))).failure().reason, Reason::malformed);
    EXPECT_EQ(publish(only("")).failure().reason, Reason::malformed);
    EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_P(PublishNewFile, theModeIsTheOneThatTheUmaskAllows) {
    runIsolated([&] {
        ::umask(027);
        EXPECT_EQ(rightsOf(*publish(only(folder_ / "a.jpg"))), 0640u);
        ::umask(0);
        EXPECT_EQ(rightsOf(*publish(only(folder_ / "b.jpg"))), 0666u);
    });
}

TEST_P(PublishNewFile, withoutPermissionInTheFolderNothingIsCreated) {
    ::chmod(folder_.path().c_str(), 0555);
    runAsOrdinaryUser(
        [&] { EXPECT_EQ(publish(only(folder_ / "a.jpg")).failure().reason, Reason::notPermitted); });
    ::chmod(folder_.path().c_str(), 0700);
    EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_P(PublishNewFile, theFolderNeedNotBeReadable) {
    ::chmod(folder_.path().c_str(), 0333);
    runAsOrdinaryUser([&] { EXPECT_TRUE(publish(only(folder_ / "a.jpg"), "new", Durability::synced)); });
    ::chmod(folder_.path().c_str(), 0700);
    EXPECT_EQ(readFile(folder_ / "a.jpg"), "new");
}

TEST_P(PublishNewFile, onAFullDiskNothingRemains) {
    runWithOwnMounts([&] {
        testing::mountFileSystem(folder_ / "disk", 64);
        EXPECT_EQ(publish(only(folder_ / "disk/a.jpg"), std::string(200'000, 'x')).failure().reason,
                  Reason::noSpace);
        EXPECT_THAT(namesIn(folder_ / "disk"), IsEmpty());
        EXPECT_TRUE(publish(only(folder_ / "disk/b.jpg"), std::string(40'000, 'x')))
            << "the disk space is free again";
    });
}

TEST_P(PublishNewFile, aFileAboveTheProcessLimitIsTooLargeAndNothingRemains) {
    runIsolated([&] {
        (void)std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1000, 1000};
        ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
        EXPECT_EQ(publish(only(folder_ / "a.jpg"), std::string(5000, 'x')).failure().reason,
                  Reason::tooLarge);
    });
    EXPECT_THAT(namesIn(folder_.path()), IsEmpty());
}

TEST_P(PublishNewFile, concurrentWritersGetDifferentNames) {
    constexpr unsigned writers = 8, filesEach = 20;
    std::mutex mutex;
    std::set<std::string> contents;
    const auto write = [&](unsigned writer) {
        for (unsigned file = 0; file < filesEach; ++file) {
            const std::string content = std::to_string(writer) + "/" + std::to_string(file);
            Result<std::string> path = publish(numbered(folder_ / "a"), content);
            const std::lock_guard lock(mutex);
            ASSERT_TRUE(path);
            EXPECT_EQ(readFile(*path), content);
            contents.insert(content);
        }
    };
    std::vector<std::thread> threads;
    for (unsigned writer = 0; writer < writers; ++writer)
        threads.emplace_back(write, writer);
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(contents.size(), writers * filesEach);
    EXPECT_EQ(namesIn(folder_.path()).size(), writers * filesEach);
}

std::string mechanismName(const ::testing::TestParamInfo<PublishMechanisms>& test) {
    constexpr const char* names[] = {"namelessFile", "exclusiveRename", "hardLink", "reservation"};
    return names[test.index];
}

INSTANTIATE_TEST_SUITE_P(Mechanisms, PublishNewFile,
                         ::testing::Values(PublishMechanisms{}, PublishMechanisms{false, {}},
                                           PublishMechanisms{false, {false, true}},
                                           PublishMechanisms{false, {false, false}}),
                         mechanismName);

TEST(AtomicFile, withoutProcTheNextMechanismIsUsed) {
    const TemporaryFolder folder;
    runWithOwnMounts([&] {
        ASSERT_EQ(::mount("tmpfs", "/proc", "tmpfs", 0, nullptr), 0);
        ASSERT_TRUE(publishNewFile(only(folder / "a.jpg"), bytesOf("new"), Durability::synced));
        EXPECT_EQ(readFile(folder / "a.jpg"), "new");
        EXPECT_THAT(namesIn(folder.path()), ElementsAre("a.jpg"));
    });
}

TEST(AtomicFile, relativePathsWork) {
    const TemporaryFolder folder;
    runIsolated([&] {
        std::filesystem::current_path(folder.path());
        EXPECT_EQ(*publishNewFile(only("a.jpg"), bytesOf("new"), Durability::cached), "a.jpg");
        EXPECT_TRUE(replaceFile("b.jpg", bytesOf("new")));
    });
    EXPECT_THAT(namesIn(folder.path()), UnorderedElementsAre("a.jpg", "b.jpg"));
}

TEST(ReplaceFile, anExistingFileGetsTheNewContentAndKeepsItsMode) {
    const TemporaryFolder folder;
    const std::string path = folder.write("preferences", "old");
    for (const mode_t rights : {0640u, 0600u, 0666u, 01640u}) {
        ::chmod(path.c_str(), rights);
        ASSERT_TRUE(replaceFile(path, bytesOf("new")));
        EXPECT_EQ(readFile(path), "new");
        EXPECT_EQ(rightsOf(path), rights);
    }
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("preferences"));
}

TEST(ReplaceFile, aNewFileAndItsNewFoldersAreForTheUserOnly) {
    const TemporaryFolder folder;
    ASSERT_TRUE(replaceFile(folder / "a/b/preferences", bytesOf("new")));
    EXPECT_EQ(readFile(folder / "a/b/preferences"), "new");
    EXPECT_EQ(rightsOf(folder / "a/b/preferences"), 0600u);
    EXPECT_EQ(rightsOf(folder / "a"), 0700u);
    EXPECT_EQ(rightsOf(folder / "a/b"), 0700u);
}

TEST(ReplaceFile, aLinkStaysAndItsTargetIsReplaced) {
    const TemporaryFolder folder;
    folder.write("dotfiles/preferences", "old");
    std::filesystem::create_symlink("dotfiles/preferences", folder / "relative");
    std::filesystem::create_symlink(folder / "relative", folder / "chain");
    ASSERT_TRUE(replaceFile(folder / "chain", bytesOf("new")));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "chain")
                && std::filesystem::is_symlink(folder / "relative"));
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "dotfiles/preferences"));
    EXPECT_EQ(readFile(folder / "dotfiles/preferences"), "new");
}

TEST(ReplaceFile, theMissingTargetOfALinkIsCreated) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("later/preferences", folder / "link");
    ASSERT_TRUE(replaceFile(folder / "link", bytesOf("new")));
    EXPECT_EQ(readFile(folder / "later/preferences"), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
}

TEST(ReplaceFile, circularLinksFail) {
    const TemporaryFolder folder;
    std::filesystem::create_symlink("two", folder / "one");
    std::filesystem::create_symlink("one", folder / "two");
    EXPECT_FALSE(replaceFile(folder / "one", bytesOf("new")));
}

TEST(ReplaceFile, aWriteProtectedFileIsNotChanged) {
    const TemporaryFolder folder;
    ::chmod(folder.path().c_str(), 0777);
    const std::string path = folder.write("preferences", "old");
    ::chmod(path.c_str(), 0444);
    runAsOrdinaryUser(
        [&] { EXPECT_EQ(replaceFile(path, bytesOf("new")).failure().reason, Reason::notPermitted); });
    EXPECT_EQ(readFile(path), "old");
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("preferences"));
}

TEST(ReplaceFile, onlyFilesAreReplaced) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkdir((folder / "folder").c_str(), 0700), 0);
    ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
    for (const char* name : {"folder", "pipe"})
        EXPECT_EQ(replaceFile(folder / name, bytesOf("new")).failure().reason, Reason::notRegularFile)
            << name;
    EXPECT_EQ(replaceFile("", bytesOf("new")).failure().reason, Reason::malformed);
}

TEST(WriteFile, aNewFileHasTheModeThatTheUmaskAllows) {
    const TemporaryFolder folder;
    runIsolated([&] {
        ::umask(027);
        for (const Overwrite overwrite : {Overwrite::no, Overwrite::yes}) {
            const std::string path = folder / (overwrite == Overwrite::yes ? "yes" : "no");
            ASSERT_TRUE(writeFile(path, bytesOf("new"), overwrite, Durability::cached));
            EXPECT_EQ(readFile(path), "new");
            EXPECT_EQ(rightsOf(path), 0640u);
        }
    });
    EXPECT_THAT(namesIn(folder.path()), UnorderedElementsAre("yes", "no"));
}

TEST(WriteFile, anExistingFileStaysUnlessItMayBeReplaced) {
    const TemporaryFolder folder;
    const std::string path = folder.write("page.html", "old");
    ::chmod(path.c_str(), 0604);
    EXPECT_EQ(writeFile(path, bytesOf("new"), Overwrite::no, Durability::cached).failure().reason,
              Reason::alreadyExists);
    EXPECT_EQ(readFile(path), "old");
    ASSERT_TRUE(writeFile(path, bytesOf("new"), Overwrite::yes, Durability::cached));
    EXPECT_EQ(readFile(path), "new");
    EXPECT_EQ(rightsOf(path), 0604u);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("page.html"));
}

TEST(WriteFile, noFolderIsCreatedAndOnlyFilesAreReplaced) {
    const TemporaryFolder folder;
    ASSERT_EQ(::mkdir((folder / "folder").c_str(), 0700), 0);
    std::filesystem::create_symlink("none/page.html", folder / "link");
    const auto reasonOfFailure = [&](const std::string& path, Overwrite overwrite) {
        return writeFile(path, bytesOf("new"), overwrite, Durability::cached).failure().reason;
    };
    for (const Overwrite overwrite : {Overwrite::no, Overwrite::yes}) {
        EXPECT_EQ(reasonOfFailure(folder / "none/page.html", overwrite), Reason::notFound);
        EXPECT_EQ(reasonOfFailure("", overwrite), Reason::malformed);
    }
    EXPECT_EQ(reasonOfFailure(folder / "link", Overwrite::yes), Reason::notFound);
    EXPECT_EQ(reasonOfFailure(folder / "folder", Overwrite::yes), Reason::notRegularFile);
    EXPECT_THAT(namesIn(folder.path()), UnorderedElementsAre("folder", "link"));
}

TEST(ReplaceFile, theOwnerIsKeptWhenRootReplacesAUsersFile) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give files to other users";
    const TemporaryFolder folder;
    const std::string path = folder.write("preferences", "old");
    for (const auto& [user, group] :
         {std::pair{65534u, 65533u}, std::pair{65534u, 0u}, std::pair{0u, 65534u}}) {
        ASSERT_EQ(::chown(path.c_str(), user, group), 0);
        ASSERT_TRUE(replaceFile(path, bytesOf("new")));
        struct stat status {};
        ASSERT_EQ(::stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_uid, user);
        EXPECT_EQ(status.st_gid, group);
    }
}

TEST(ReplaceFile, onAFullDiskTheOldContentStays) {
    const TemporaryFolder folder;
    runWithOwnMounts([&] {
        testing::mountFileSystem(folder / "disk", 64);
        const std::string path = folder.write("disk/preferences", "old");
        EXPECT_EQ(replaceFile(path, Bytes(200'000)).failure().reason, Reason::noSpace);
        EXPECT_EQ(readFile(path), "old");
        EXPECT_THAT(namesIn(folder / "disk"), ElementsAre("preferences"));
    });
}

} // namespace
} // namespace kestrine
