#include "platform/imageio/FileContents.h"

#include <gtest/gtest.h>

namespace kestrine {

TEST(FileContents, becomeBytesAndAreReadAgain) {
    const FileContents contents{FileContents::Kind::layers, 70'000};
    EXPECT_EQ(contentsIn(bytesOf(contents)), contents);
}

TEST(FileContents, otherBytesAreRefused) {
    EXPECT_FALSE(contentsIn({}));
    EXPECT_FALSE(contentsIn(Bytes{0, 0, 0, 1}));
    EXPECT_FALSE(contentsIn(Bytes{6, 0, 0, 0, 1}));
}

} // namespace kestrine
