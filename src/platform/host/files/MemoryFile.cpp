#include "platform/host/files/MemoryFile.h"

#include "platform/host/files/FileContent.h"

#include <sys/mman.h>
#include <unistd.h>

namespace kestrine {

Result<MemoryFile> MemoryFile::create() {
    FileDescriptor file(::memfd_create("kestrine", MFD_CLOEXEC));
    if (!file.isOpen())
        return systemFailure("cannot make a file in memory");
    return MemoryFile(std::move(file));
}

Result<void> MemoryFile::write(ByteView bytes, std::uint64_t offset) const {
    return writeAllAt(number(), bytes, offset, "cannot write to a file in memory");
}

Result<Bytes> MemoryFile::read(std::uint64_t offset, std::uint64_t size) const {
    Bytes bytes(static_cast<std::size_t>(size));
    if (readAt(number(), bytes, offset).bytes < bytes.size())
        return Failure{Reason::truncated, "a file in memory ends too early"};
    return bytes;
}

void MemoryFile::clear() const { (void)!::ftruncate(number(), 0); }

} // namespace kestrine
