#include "platform/host/files/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

namespace kestrine {

Result<TemporaryFile> TemporaryFile::create(int folder, mode_t mode, const std::string& folderPath,
                                            std::string name) {
    FolderEntry entry{folder, std::move(name)};
    FileDescriptor file(
        ::openat(folder, entry.name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
    if (!file.isOpen())
        return systemFailure("cannot create a file in " + folderPath);
    return TemporaryFile(std::move(entry), std::move(file));
}

TemporaryFile::~TemporaryFile() {
    if (!entry_.name.empty())
        ::unlinkat(entry_.folder, entry_.name.c_str(), 0);
}

} // namespace kestrine
