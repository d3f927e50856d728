// Many processes give files the same few names, and move what has these names to the trash.
#include "models/ResizeJob.h"
#include "platform/host/files/PublishMechanisms.h"
#include "platform/host/trash/Trash.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <cstdlib>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace kestrine {
namespace {

using testing::readFile;
using testing::TemporaryFolder;

constexpr unsigned processes = 16;
constexpr unsigned namingsOfEach = 100;
constexpr std::array names{u"a.jpg", u"a_1.jpg", u"b"};

/// 2 rounds give 3,200 namings. The environment can ask for more.
unsigned rounds() {
    const char* const wanted = std::getenv("KESTRINE_NAMING_ROUNDS");
    return wanted == nullptr ? 2 : static_cast<unsigned>(std::atoi(wanted));
}

/// Longer than a page, so that a mixture of two files would be noticed.
std::string content(unsigned process, unsigned number) {
    std::string text;
    while (text.size() < 5000)
        text += std::to_string(process) + "/" + std::to_string(number) + " ";
    return text;
}

ByteView bytesIn(const std::string& text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

/// One process of a round. Returns whether every file got a name and could be read under it, unless another
/// process had moved it by then.
bool nameFiles(const std::string& folder, const Environment& environment, unsigned process, unsigned seed) {
    constexpr std::array mechanisms{PublishMechanisms{}, PublishMechanisms{false, {}},
                                    PublishMechanisms{false, {false, true}}};
    std::minstd_rand chance(seed);
    for (unsigned number = 0; number < namingsOfEach; ++number) {
        const NSString wanted =
            NSString::fromUTF8(folder).appendingPathComponent(names[chance() % names.size()]);
        if (number % 3 == 2)
            (void)moveToTrash(wanted.utf8(), environment);
        const std::string text = content(process, number);
        const Result<std::string> path =
            publishNewFile([&](unsigned) { return uniqueFileName(wanted).utf8(); }, bytesIn(text),
                           Durability::cached, mechanisms[chance() % mechanisms.size()]);
        if (!path)
            return false;
    }
    return true;
}

/// The contents of all files below a folder, and how often each occurs.
std::map<std::string, unsigned> contentsBelow(const std::string& folder) {
    std::map<std::string, unsigned> contents;
    std::error_code absent;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder, absent))
        if (entry.is_regular_file())
            ++contents[readFile(entry.path().string())];
    return contents;
}

std::size_t filesIn(const std::string& folder) {
    std::error_code absent;
    const std::filesystem::directory_iterator entries(folder, absent);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

TEST(ConcurrentNames, nothingIsLostOrOverwritten) {
    for (unsigned round = 0; round < rounds(); ++round) {
        const TemporaryFolder home("/dev/shm"); // where syncing costs nothing
        const Environment environment{{"HOME", home.path().string()}};
        const std::string folder = home / "pictures", trash = home / ".local/share/Trash";
        std::filesystem::create_directory(folder);
        std::vector<pid_t> children;
        for (unsigned process = 0; process < processes; ++process) {
            const pid_t child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0)
                ::_exit(nameFiles(folder, environment, process, round * processes + process + 1) ? 0 : 1);
            children.push_back(child);
        }
        for (const pid_t child : children) {
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
        }
        std::map<std::string, unsigned> found = contentsBelow(folder);
        for (const auto& [text, count] : contentsBelow(trash + "/files"))
            found[text] += count;
        EXPECT_EQ(found.size(), processes * namingsOfEach);
        for (unsigned process = 0; process < processes; ++process)
            for (unsigned number = 0; number < namingsOfEach; ++number)
                ASSERT_EQ(found[content(process, number)], 1u) << process << "/" << number;
        EXPECT_EQ(filesIn(trash + "/files"), filesIn(trash + "/info"));
        EXPECT_GT(filesIn(trash + "/files"), 0u);
    }
}

} // namespace
} // namespace kestrine
