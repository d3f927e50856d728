#include "platform/carbon/Aliases.h"
#include "platform/carbon/MemoryRefusal.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kestrine {
namespace {

using testing::TemporaryFolder;
namespace fs = std::filesystem;

FSRef refOf(const std::string& path) {
    FSRef reference;
    EXPECT_EQ(FSPathMakeRef(reinterpret_cast<const std::uint8_t*>(path.c_str()), &reference, nullptr), noErr);
    return reference;
}

Bytes aliasOf(const std::string& path) {
    const FSRef reference = refOf(path);
    AliasHandle alias = nullptr;
    EXPECT_EQ(FSNewAlias(nullptr, &reference, &alias), noErr);
    if (alias == nullptr)
        return {};
    Bytes bytes(*alias, *alias + GetHandleSize(alias));
    DisposeHandle(alias);
    return bytes;
}

/// The path of the alias; "" on failure.
std::string followed(const Bytes& alias) {
    const Result<std::string> path = pathOfAlias(alias);
    return path ? *path : "";
}

class Aliases : public ::testing::Test {
protected:
    const TemporaryFolder folder_{fs::canonical(fs::temp_directory_path())};
};

TEST_F(Aliases, findTheItemAtItsOldPath) {
    const std::string path = folder_.write("file", "");
    EXPECT_EQ(followed(aliasOf(path)), path);
    EXPECT_EQ(followed(aliasOf(folder_.path())), folder_.path());
    EXPECT_EQ(followed(aliasOf("/")), "/");
}

TEST_F(Aliases, findARenamedItem) {
    const Bytes alias = aliasOf(folder_.write("old", ""));
    const Bytes other = aliasOf(folder_.write("another", ""));
    fs::rename(folder_ / "old", folder_ / "new");
    fs::rename(folder_ / "another", folder_ / "renamed");
    EXPECT_EQ(followed(alias), folder_ / "new");
    EXPECT_EQ(followed(other), folder_ / "renamed");
}

TEST_F(Aliases, preferTheItemAtTheOldPath) {
    const Bytes alias = aliasOf(folder_.write("file", "old"));
    fs::rename(folder_ / "file", folder_ / "backup");
    folder_.write("file", "new");
    EXPECT_EQ(followed(alias), folder_ / "file");
}

TEST_F(Aliases, findNoRemovedItem) {
    const Bytes alias = aliasOf(folder_.write("inner/file", ""));
    fs::remove(folder_ / "inner/file");
    EXPECT_EQ(pathOfAlias(alias).failure().reason, Reason::notFound);
    fs::remove(folder_ / "inner");
    EXPECT_EQ(pathOfAlias(alias).failure().reason, Reason::notFound);
}

TEST_F(Aliases, keepUnusualNames) {
    for (const char* name : {"a:b", "\"\n", "caf\xe9"}) {
        const std::string path = folder_.write(name, "");
        EXPECT_EQ(followed(aliasOf(path)), path);
    }
}

TEST_F(Aliases, invalidBytesAreMalformed) {
    const Bytes alias = aliasOf(folder_.write("file", ""));
    for (std::size_t length = 0; length < alias.size(); length++)
        EXPECT_EQ(pathOfAlias(ByteView(alias).first(length)).failure().reason, Reason::malformed) << length;
    for (const std::size_t place : {5u, 7u, 24u}) { // the size, the version and the path's slash
        Bytes changed = alias;
        changed[place]++;
        EXPECT_EQ(pathOfAlias(changed).failure().reason, Reason::malformed) << place;
    }
    Bytes cut = alias;
    cut.back() = 0;
    EXPECT_EQ(pathOfAlias(cut).failure().reason, Reason::malformed);
}

TEST_F(Aliases, areNotMadeOfMissingItems) {
    AliasHandle alias = nullptr;
    const FSRef empty;
    const FSRef root = refOf("/");
    FSRef topLevel;
    ASSERT_EQ(FSGetCatalogInfo(&root, kFSCatInfoNone, nullptr, nullptr, nullptr, &topLevel), noErr);
    const FSRef gone = refOf(folder_.write("file", ""));
    fs::remove(folder_ / "file");
    EXPECT_EQ(FSNewAlias(nullptr, nullptr, &alias), paramErr);
    EXPECT_EQ(FSNewAlias(nullptr, &gone, nullptr), paramErr);
    EXPECT_EQ(FSNewAlias(nullptr, &empty, &alias), errFSBadFSRef);
    EXPECT_EQ(FSNewAlias(nullptr, &topLevel, &alias), errFSBadFSRef);
    EXPECT_EQ(FSNewAlias(nullptr, &gone, &alias), fnfErr);
    EXPECT_EQ(alias, nullptr);
}

TEST_F(Aliases, lackOfMemoryIsReported) {
    const FSRef reference = refOf("/");
    AliasHandle alias = nullptr;
    refuseMemory(memFullErr);
    EXPECT_EQ(FSNewAlias(nullptr, &reference, &alias), memFullErr);
    refuseMemory(std::nullopt);
    EXPECT_EQ(alias, nullptr);
}

} // namespace
} // namespace kestrine
