#include "platform/host/files/TemporaryFile.h"

#include "platform/host/files/DuplicatedDescriptor.h"

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

Result<TemporaryFile> TemporaryFile::of(const NamelessFile& file, int folder, std::string name) {
    FileDescriptor own = TRY(duplicated(file.descriptor()));
    FolderEntry entry{folder, std::move(name)};
    if (const int error = file.giveName(entry); NamelessFile::isMissing(error))
        return Failure{Reason::unsupported, "a nameless file can have no name there"};
    else if (error != 0)
        return systemFailure("cannot create " + entry.name, error);
    return TemporaryFile(std::move(entry), std::move(own));
}

TemporaryFile::~TemporaryFile() {
    if (!entry_.name.empty())
        ::unlinkat(entry_.folder, entry_.name.c_str(), 0);
}

} // namespace kestrine
