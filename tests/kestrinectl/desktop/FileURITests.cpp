#include "kestrinectl/desktop/FileURI.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

TEST(FileURI, givesThePath) {
    EXPECT_EQ(pathOfFileURI("file:///a/b.jpg"), "/a/b.jpg");
    EXPECT_EQ(pathOfFileURI("file://localhost/a"), "/a");
    EXPECT_EQ(pathOfFileURI("file:///50%25%20%0a%FF"), "/50% \n\xff");
}

TEST(FileURI, ofAnotherPlaceOrMalformedGivesNone) {
    for (const char* uri : {"", "/a", "sftp://host/a", "file://host/a", "file:/a", "file:///%", "file:///%4",
                            "file:///%4g", "file:///%00", "file:///% 1", "file:///%-1"})
        EXPECT_EQ(pathOfFileURI(uri), std::nullopt) << uri;
}

} // namespace
} // namespace kestrine
