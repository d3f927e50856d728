#include "platform/host/files/ContentDigest.h"

#include "platform/host/StringBytes.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileDescriptor.h"

namespace kestrine {

void RunningDigest::add(ByteView more) {
    constexpr std::uint64_t prime = 0x100000001b3; // as FNV-1a defines it
    std::uint64_t number = digest_.number;
    for (const std::uint8_t byte : more)
        number = (number ^ byte) * prime;
    digest_ = {digest_.bytes + more.size(), number};
}

ContentDigest digestOf(ByteView content) {
    RunningDigest running;
    running.add(content);
    return running.digest();
}

ContentDigest digestOf(const std::string& content) { return digestOf(bytesOf(content)); }

Result<ContentDigest> digestOfFile(const std::string& path) {
    const FileDescriptor file = TRY(openForReading(path));
    return digestOfOpenFile(file.number());
}

Result<ContentDigest> digestOfOpenFile(int file) {
    RunningDigest running;
    TRY(forEachBlock(file, [&running](ByteView block) {
        running.add(block);
        return Result<void>();
    }));
    return running.digest();
}

} // namespace kestrine
