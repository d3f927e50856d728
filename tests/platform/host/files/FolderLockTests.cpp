#include "platform/host/files/FolderLock.h"

#include "tests/support/TemporaryFolder.h"

#include <atomic>
#include <gtest/gtest.h>
#include <optional>
#include <thread>

namespace kestrine {

TEST(FolderLock, onlyOneThreadAtATimeHoldsTheLock) {
    const testing::TemporaryFolder folder;
    std::atomic<int> inside = 0, most = 0;
    const auto work = [&] {
        for (int i = 0; i < 50; ++i) {
            const Result<FolderLock> lock = FolderLock::take(folder.path().string());
            ASSERT_TRUE(lock.ok());
            most = std::max(most.load(), ++inside);
            std::this_thread::yield();
            --inside;
        }
    };
    std::thread first(work), second(work), third(work);
    first.join(), second.join(), third.join();
    EXPECT_EQ(most, 1);
}

TEST(FolderLock, aMissingFolderCannotBeLocked) {
    const testing::TemporaryFolder folder;
    EXPECT_EQ(FolderLock::take(folder / "none").failure().reason, Reason::notFound);
}

} // namespace kestrine
