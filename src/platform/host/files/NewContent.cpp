#include "platform/host/files/NewContent.h"

#include "platform/host/files/FileContent.h"

#include <sys/stat.h>

namespace kestrine {

Result<NewContent> NewContent::of(NamelessFile file) {
    struct stat status {};
    if (::fstat(file.descriptor(), &status) != 0)
        return systemFailure("cannot examine a new file");
    return NewContent(std::move(file), static_cast<std::uint64_t>(status.st_size));
}

Result<ContentDigest> NewContent::digest() const {
    return file() != nullptr ? digestOfOpenFile(file()->descriptor())
                             : digestOf(std::get<ByteView>(content_));
}

Result<void> NewContent::writeTo(int to) const {
    if (file() == nullptr)
        return writeAll(to, std::get<ByteView>(content_));
    return forEachBlock(file()->descriptor(), [to](ByteView block) { return writeAll(to, block); });
}

} // namespace kestrine
