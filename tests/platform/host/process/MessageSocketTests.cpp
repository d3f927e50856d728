#include "platform/host/process/MessageSocket.h"
#include "tests/support/TemporaryFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {
namespace {

struct MessageSocketTest : ::testing::Test {
    MessageSocketTest() : MessageSocketTest(*MessageSocket::pair()) {}
    explicit MessageSocketTest(std::pair<MessageSocket, MessageSocket> ends)
        : one(std::move(ends.first)), other(std::make_unique<MessageSocket>(std::move(ends.second))) {}

    static int openDescriptors() {
        int count = 0;
        for (int number = 0; number < 100; ++number)
            count += ::fcntl(number, F_GETFD) >= 0 ? 1 : 0;
        return count;
    }

    MessageSocket one;
    std::unique_ptr<MessageSocket> other;
};

TEST_F(MessageSocketTest, keepsTheBoundariesOfMessages) {
    const Bytes longest(MessageSocket::maxBytes, 7);
    ASSERT_TRUE(one.send(Bytes{1, 2}));
    ASSERT_TRUE(one.send(longest));
    EXPECT_EQ((**other->receive(false)).bytes, (Bytes{1, 2}));
    EXPECT_EQ((**other->receive(false)).bytes, longest);
}

TEST_F(MessageSocketTest, passesFilesThatStayUsable) {
    const testing::TemporaryFolder folder;
    const FileDescriptor file = *openForReading(folder.write("a", "content"));
    const int files[] = {file.number(), file.number(), file.number(), file.number()};
    ASSERT_TRUE(one.send(Bytes{1}, files));
    const std::optional<Message> message = *other->receive(true);
    ASSERT_EQ(message->files.size(), 4u);
    char content[8] = "";
    EXPECT_EQ(::pread(message->files[3].number(), content, 7, 0), 7);
    EXPECT_STREQ(content, "content");
    EXPECT_EQ(::fcntl(message->files[0].number(), F_GETFD), FD_CLOEXEC);
}

TEST_F(MessageSocketTest, takesNoFilesUnlessAsked) {
    const int files[] = {one.number()};
    ASSERT_TRUE(one.send(Bytes{1}, files));
    const int before = openDescriptors();
    const std::optional<Message> message = *other->receive(false);
    EXPECT_EQ(message->bytes, Bytes{1});
    EXPECT_TRUE(message->files.empty());
    EXPECT_EQ(openDescriptors(), before);
}

TEST_F(MessageSocketTest, refusesWhatIsEmptyOrTooLong) {
    EXPECT_EQ(one.send(Bytes()).failure().reason, Reason::tooLarge);
    EXPECT_EQ(one.send(Bytes(MessageSocket::maxBytes + 1)).failure().reason, Reason::tooLarge);
    EXPECT_EQ(one.send(Bytes{1}, std::vector<int>(5, one.number())).failure().reason, Reason::tooLarge);
    EXPECT_FALSE(other->waitForMessage(0));
}

TEST_F(MessageSocketTest, aMessageAboveTheLimitIsAFailureAndItsFilesAreClosed) {
    const Bytes tooLong(MessageSocket::maxBytes + 1);
    ASSERT_EQ(::write(one.number(), tooLong.data(), tooLong.size()), ssize_t(tooLong.size()));
    EXPECT_EQ(other->receive(true).failure().reason, Reason::tooLarge);
    ASSERT_TRUE(one.send(Bytes{1}));
    EXPECT_EQ((**other->receive(true)).bytes, Bytes{1});
}

TEST_F(MessageSocketTest, aClosedEndIsTheEndAfterAllMessages) {
    ASSERT_TRUE(other->send(Bytes{1}));
    EXPECT_TRUE(one.isConnected());
    other.reset();
    EXPECT_FALSE(one.isConnected());
    EXPECT_EQ((**one.receive(false)).bytes, Bytes{1});
    EXPECT_TRUE(one.waitForMessage(0));
    EXPECT_EQ(*one.receive(false), std::nullopt);
    EXPECT_FALSE(one.send(Bytes{1}));
}

TEST_F(MessageSocketTest, anEndThatWasClosedWithUnreadMessagesIsTheEnd) {
    ASSERT_TRUE(one.send(Bytes{1}));
    other.reset();
    EXPECT_EQ(*one.receive(false), std::nullopt);
}

TEST_F(MessageSocketTest, waitsForMessagesForALimitedTime) {
    EXPECT_FALSE(one.waitForMessage(0));
    EXPECT_FALSE(one.waitForMessage(5));
    ASSERT_TRUE(other->send(Bytes{1}));
    EXPECT_TRUE(one.waitForMessage(10'000));
}

} // namespace
} // namespace kestrine
