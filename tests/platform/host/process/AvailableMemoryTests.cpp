#include "platform/host/process/AvailableMemory.h"
#include "tests/support/IsolatedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

namespace kestrine::testing {

namespace {

/// A root folder with the system files that a test writes.
class AvailableMemory : public ::testing::Test {
protected:
    void write(std::string_view file, std::string_view text) const { folder_.write(file, text); }
    std::uint64_t available() const { return availableMemory(folder_.path().string()); }

    const TemporaryFolder folder_;
};

} // namespace

TEST_F(AvailableMemory, isWhatTheSystemHas) {
    write("proc/meminfo", "MemTotal:       16000 kB\nMemFree:  10 kB\nMemAvailable:    3000 kB\n");
    EXPECT_EQ(available(), 3000U * 1024);
}

TEST_F(AvailableMemory, isAssumedWhenTheSystemDoesNotSay) { EXPECT_EQ(available(), std::uint64_t{1} << 30); }

TEST_F(AvailableMemory, isLimitedByEveryControlGroup) {
    write("proc/meminfo", "MemAvailable:    3000 kB\n");
    write("proc/self/cgroup", "1:name=other:/other\n0::/outer/inner\n");
    write("sys/fs/cgroup/outer/inner/memory.max", "max\n");
    write("sys/fs/cgroup/outer/inner/memory.current", "7\n");
    EXPECT_EQ(available(), 3000U * 1024);
    write("sys/fs/cgroup/outer/memory.max", "9000\n");
    write("sys/fs/cgroup/outer/memory.current", "5000\n");
    EXPECT_EQ(available(), 4000U);
    write("sys/fs/cgroup/outer/inner/memory.max", "1000\n");
    EXPECT_EQ(available(), 993U);
    write("sys/fs/cgroup/memory.max", "10\n");
    write("sys/fs/cgroup/memory.current", "20\n");
    EXPECT_EQ(available(), 0U) << "inside a container, the group is mounted as the root";
}

TEST_F(AvailableMemory, countsUnusedPagesOfFilesAsFree) {
    write("proc/self/cgroup", "0::/\n");
    write("sys/fs/cgroup/memory.max", "9000\n");
    write("sys/fs/cgroup/memory.current", "8000\n");
    write("sys/fs/cgroup/memory.stat", "anon 1\nactive_file 300\ninactive_file 6000\nslab 5\n");
    EXPECT_EQ(available(), 7000U);
}

TEST_F(AvailableMemory, isLimitedByTheAddressSpace) {
    write("proc/self/statm", "10 5 5\n");
    runIsolated([this] {
        const auto used = static_cast<rlim_t>(10 * ::sysconf(_SC_PAGESIZE));
        constexpr rlim_t hugeEnoughForSanitizers = rlim_t{1} << 50;
        const rlimit limit{hugeEnoughForSanitizers, RLIM_INFINITY};
        ASSERT_EQ(::setrlimit(RLIMIT_AS, &limit), 0);
        write("proc/meminfo", "MemAvailable: 2000000000000 kB\n");
        EXPECT_EQ(available(), hugeEnoughForSanitizers - used);
    });
}

TEST(AvailableMemoryOfThisSystem, isMoreThanNothing) { EXPECT_GT(availableMemory(), 0U); }

} // namespace kestrine::testing
