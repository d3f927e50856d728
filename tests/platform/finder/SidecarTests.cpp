#include "platform/finder/Sidecar.h"
#include "platform/host/files/ExtendedAttributes.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>

namespace kestrine {
namespace {

using testing::bytesOf;
using testing::failSystemCall;
using testing::readFile;
using testing::runAsOrdinaryUser;
using testing::runIsolated;
using testing::TemporaryFolder;

class Sidecar : public ::testing::Test {
protected:
    Reason reasonOfReading(const std::string& path) {
        const Result<Bytes> content = readSidecar(path);
        EXPECT_FALSE(content);
        return content ? Reason::empty : content.failure().reason;
    }

    std::size_t namesInFolder() const {
        const auto names = std::filesystem::directory_iterator(folder_.path());
        return static_cast<std::size_t>(std::distance(begin(names), end(names)));
    }

    const TemporaryFolder folder_;
    const std::string file_ = folder_.write("a \xFF\n:%s\".jpg", "content");
};

TEST_F(Sidecar, itIsReadAndReplaced) {
    const std::string sidecar = folder_.write("._a \xFF\n:%s\".jpg", "old");
    EXPECT_EQ(*readSidecar(file_), bytesOf("old"));
    ASSERT_TRUE(replaceSidecar(file_, bytesOf("a new content")));
    EXPECT_EQ(*readSidecar(file_), bytesOf("a new content"));
    EXPECT_EQ(readFile(file_), "content");
    EXPECT_EQ(namesInFolder(), 2u) << "no temporary file is left";
}

TEST_F(Sidecar, aMissingSidecarIsNotFoundAndNotCreated) {
    EXPECT_EQ(reasonOfReading(file_), Reason::notFound);
    EXPECT_EQ(replaceSidecar(file_, bytesOf("x")).failure().reason, Reason::notFound);
    EXPECT_EQ(reasonOfReading("/"), Reason::notFound);
    EXPECT_EQ(reasonOfReading(folder_ / "none"), Reason::notFound);
    EXPECT_EQ(reasonOfReading(""), Reason::malformed);
    EXPECT_EQ(namesInFolder(), 1u);
}

TEST_F(Sidecar, aFolderHasASidecarBesideIt) {
    std::filesystem::create_directory(folder_ / "sub");
    folder_.write("._sub", "of the folder");
    EXPECT_EQ(*readSidecar(folder_ / "sub"), bytesOf("of the folder"));
    EXPECT_EQ(*readSidecar(folder_ / "sub/"), bytesOf("of the folder"));
    EXPECT_EQ(*readSidecar(folder_ / "sub/."), bytesOf("of the folder"));
}

TEST_F(Sidecar, aLinkHasTheSidecarOfItsTarget) {
    folder_.write("sub/file", "");
    folder_.write("sub/._file", "of the target");
    folder_.write("._link", "of the link");
    std::filesystem::create_symlink("sub/file", folder_ / "link");
    EXPECT_EQ(*readSidecar(folder_ / "link"), bytesOf("of the target"));
}

TEST_F(Sidecar, aSidecarThatIsNotARegularFileIsRefused) {
    const std::string victim = folder_.write("victim", "precious");
    folder_.write("linked", "");
    folder_.write("folder", "");
    folder_.write("pipe", "");
    std::filesystem::create_symlink(victim, folder_ / "._linked");
    std::filesystem::create_directory(folder_ / "._folder");
    ASSERT_EQ(::mkfifo((folder_ / "._pipe").c_str(), 0600), 0);
    for (const char* name : {"linked", "folder", "pipe"}) {
        EXPECT_EQ(reasonOfReading(folder_ / name), Reason::notRegularFile) << name;
        EXPECT_FALSE(replaceSidecar(folder_ / name, bytesOf("x"))) << name;
    }
    EXPECT_EQ(readFile(victim), "precious");
}

TEST_F(Sidecar, aSidecarAboveTheSizeLimitIsTooLarge) {
    const std::string sidecar = folder_.write("._big", "");
    folder_.write("big", "");
    std::filesystem::resize_file(sidecar, 17 * 1024 * 1024);
    EXPECT_TRUE(readSidecar(folder_ / "big"));
    std::filesystem::resize_file(sidecar, 17 * 1024 * 1024 + 1);
    EXPECT_EQ(reasonOfReading(folder_ / "big"), Reason::tooLarge);
}

TEST_F(Sidecar, aNameTooLongForASidecarIsTooLarge) {
    EXPECT_EQ(reasonOfReading(folder_.write(std::string(254, 'x'), "")), Reason::tooLarge);
}

TEST_F(Sidecar, replacingKeepsPermissionsAndAttributes) {
    folder_.write("kept", "");
    const std::string sidecar = folder_.write("._kept", "old");
    ASSERT_EQ(::chmod(sidecar.c_str(), 0640), 0);
    const bool hasAttributes = bool(setExtendedAttribute(sidecar, "user.a", bytesOf("1")));
    ASSERT_TRUE(replaceSidecar(folder_ / "kept", bytesOf("new")));
    struct stat status {};
    ASSERT_EQ(::stat(sidecar.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640u);
    if (hasAttributes) {
        EXPECT_EQ(*getExtendedAttribute(sidecar, "user.a"), bytesOf("1"));
    }
}

TEST_F(Sidecar, replacingUpdatesTheModificationTime) {
    folder_.write("dated", "");
    const std::string sidecar = folder_.write("._dated", "old");
    const auto longAgo = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24);
    std::filesystem::last_write_time(sidecar, longAgo);
    ASSERT_TRUE(replaceSidecar(folder_ / "dated", bytesOf("new")));
    EXPECT_GT(std::filesystem::last_write_time(sidecar), longAgo + std::chrono::hours(23));
}

TEST_F(Sidecar, aFailureLeavesTheOldSidecarAndNothingElse) {
    folder_.write("safe", "");
    folder_.write("._safe", "old");
    const std::size_t before = namesInFolder();
    runIsolated([&] {
        if (!failSystemCall(SYS_fsync, EIO))
            GTEST_SKIP() << "this system permits no filter of system calls";
        EXPECT_EQ(replaceSidecar(folder_ / "safe", bytesOf("new")).failure().reason, Reason::inputOutput);
    });
    EXPECT_EQ(*readSidecar(folder_ / "safe"), bytesOf("old"));
    EXPECT_EQ(namesInFolder(), before);
}

TEST_F(Sidecar, aWriteProtectedSidecarIsNotReplaced) {
    ::chmod(folder_.path().c_str(), 0777);
    folder_.write("readonly", "");
    ::chmod(folder_.write("._readonly", "old").c_str(), 0444);
    runAsOrdinaryUser([&] {
        EXPECT_EQ(*readSidecar(folder_ / "readonly"), bytesOf("old"));
        EXPECT_EQ(replaceSidecar(folder_ / "readonly", bytesOf("new")).failure().reason,
                  Reason::notPermitted);
    });
}

TEST_F(Sidecar, aFolderThatCanOnlyBeSearchedIsEnough) {
    const std::string inside = folder_.write("secret/file", "");
    folder_.write("secret/._file", "content");
    const std::string alone = folder_.write("secret/alone", "");
    ::chmod(folder_.path().c_str(), 0755);
    ::chmod((folder_ / "secret").c_str(), 0711);
    runAsOrdinaryUser([&] {
        EXPECT_EQ(*readSidecar(inside), bytesOf("content"));
        EXPECT_EQ(reasonOfReading(alone), Reason::notFound);
    });
}

} // namespace
} // namespace kestrine
