#include "platform/host/files/ContentDigest.h"

#include "platform/host/StringBytes.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileDescriptor.h"

namespace kestrine {

namespace {

/// The digest of the bytes that `digest` covers, followed by `more`.
ContentDigest extended(const ContentDigest& digest, ByteView more) {
    constexpr std::uint64_t prime = 0x100000001b3; // as FNV-1a defines it
    std::uint64_t number = digest.number;
    for (const std::uint8_t byte : more)
        number = (number ^ byte) * prime;
    return {digest.bytes + more.size(), number};
}

constexpr ContentDigest ofNothing{0, 0xcbf29ce484222325}; // the offset basis of FNV-1a

} // namespace

ContentDigest digestOf(ByteView content) { return extended(ofNothing, content); }

ContentDigest digestOf(const std::string& content) { return digestOf(bytesOf(content)); }

Result<ContentDigest> digestOfFile(const std::string& path) {
    const FileDescriptor file = TRY(openForReading(path));
    return digestOfOpenFile(file.number());
}

Result<ContentDigest> digestOfOpenFile(int file) {
    ContentDigest digest = ofNothing;
    TRY(forEachBlock(file, [&digest](ByteView block) {
        digest = extended(digest, block);
        return Result<void>();
    }));
    return digest;
}

} // namespace kestrine
