#include "platform/imageio/worker/Parcel.h"

#include <gtest/gtest.h>

namespace kestrine::worker {
namespace {

const Bytes aShortPart(100, 1), aLongPart(100'000, 2);

Result<Parcel> sent(const Parcel& parcel, const MemoryFile& shared, std::uint64_t maxContent = 1'000'000) {
    const Bytes message = TRY(packed(parcel, shared));
    EXPECT_LE(message.size(), MessageSocket::maxBytes);
    return unpacked(message, shared, maxContent);
}

TEST(WorkerParcel, arrivesHoweverLongItsPartsAre) {
    const MemoryFile shared = *MemoryFile::create();
    for (const Bytes& head : {Bytes(), aShortPart, aLongPart})
        for (const Bytes& content : {Bytes(), aShortPart, aLongPart}) {
            const Result<Parcel> received = sent({head, content}, shared);
            ASSERT_TRUE(received) << received.failure().text;
            EXPECT_EQ(received->head, head);
            EXPECT_EQ(received->content, content);
        }
}

TEST(WorkerParcel, withMoreContentThanTheLimitIsRefused) {
    const MemoryFile shared = *MemoryFile::create();
    for (const Bytes& content : {aShortPart, aLongPart}) {
        EXPECT_TRUE(sent({{}, content}, shared, content.size()));
        const Result<Parcel> received = sent({{}, content}, shared, content.size() - 1);
        ASSERT_FALSE(received);
        EXPECT_EQ(received.failure().reason, Reason::malformed);
    }
}

TEST(WorkerParcel, ofWhichTheSharedFileHoldsTooLittleIsRefused) {
    const MemoryFile shared = *MemoryFile::create();
    const Bytes message = *packed({{}, aLongPart}, shared);
    shared.clear();
    ASSERT_TRUE(shared.write(aShortPart, 0));
    EXPECT_EQ(unpacked(message, shared, 1'000'000).failure().reason, Reason::truncated);
}

TEST(WorkerParcel, thatIsCutOffIsRefused) {
    const MemoryFile shared = *MemoryFile::create();
    const Bytes message = *packed({aShortPart, aShortPart}, shared);
    for (std::size_t size = 0; size < message.size(); ++size)
        EXPECT_FALSE(unpacked(ByteView(message).first(size), shared, 1'000'000)) << size;
}

} // namespace
} // namespace kestrine::worker
