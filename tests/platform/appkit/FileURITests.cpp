#include "platform/appkit/FileURI.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using namespace std::string_literals;

TEST(FileURI, namesAPathOnThisMachine) {
    const struct {
        std::string uri, path;
    } cases[] = {
        {"file:///", "/"},
        {"file:///home/anna/Pictures", "/home/anna/Pictures"},
        {"file://localhost/home", "/home"},
        {"file:///a%20b/%C3%A9%e3%81%82", "/a b/\u00e9\u3042"},
        {"file:///%FF%80x", "/\xff\x80x"},
        {"file:///line%0A%0a", "/line\n\n"},
        {"file:///100%25%3F%23", "/100%?#"},
        {"file:///%2e%2E/%2F", "/..//"},
        {"file:///a+b", "/a+b"},
    };
    for (const auto& [uri, path] : cases) {
        const Result<std::string> result = pathOfFileURI(uri);
        ASSERT_TRUE(result) << uri;
        EXPECT_EQ(*result, path) << uri;
    }
}

TEST(FileURI, nothingElseNamesAPath) {
    const std::string cases[] = {
        "",
        "/home",
        "file:",
        "file:/home",
        "file://",
        "file://a",
        "file://a/b",
        "file://localhostx/",
        "http:///home",
        "sftp://host/home",
        "FILE///home",
        "file:///%",
        "file:///%4",
        "file:///%4g",
        "file:///%zz",
        "file:///%+1",
        "file:///%-1",
        "file:///% 1",
        "file:///%00",
        "file:///a%00b",
        "file:///a?b",
        "file:///a#b",
        "file:///a\0b"s,
    };
    for (const std::string& uri : cases) {
        const Result<std::string> result = pathOfFileURI(uri);
        ASSERT_FALSE(result) << uri;
        EXPECT_EQ(result.failure().reason, Reason::malformed) << uri;
    }
}

} // namespace
} // namespace kestrine
