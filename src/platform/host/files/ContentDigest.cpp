#include "platform/host/files/ContentDigest.h"

#include "platform/host/StringBytes.h"
#include "platform/host/files/FileContent.h"

#include <limits>

namespace kestrine {

ContentDigest digestOf(ByteView content) {
    constexpr std::uint64_t offset = 0xcbf29ce484222325, prime = 0x100000001b3; // as FNV-1a defines them
    std::uint64_t number = offset;
    for (const std::uint8_t byte : content)
        number = (number ^ byte) * prime;
    return {content.size(), number};
}

ContentDigest digestOf(const std::string& content) { return digestOf(bytesOf(content)); }

Result<ContentDigest> digestOfFile(const std::string& path) {
    const Bytes content = TRY(readSmallFile(path, std::numeric_limits<std::int64_t>::max()));
    return digestOf(ByteView(content));
}

} // namespace kestrine
