#include "platform/host/files/FileDescriptor.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {

namespace {

Reason reasonOfErrorNumber(int errorNumber) {
    switch (errorNumber) {
    case ENOENT:
    case ENOTDIR:
        return Reason::notFound;
    case EEXIST:
        return Reason::alreadyExists;
    case EACCES:
    case EPERM:
    case EROFS:
        return Reason::notPermitted;
    case ENOSPC:
    case EDQUOT:
        return Reason::noSpace;
    case EFBIG:
    case ENAMETOOLONG:
        return Reason::tooLarge;
    case EOPNOTSUPP:
    case ENOSYS:
    case EXDEV:
        return Reason::unsupported;
    default:
        return Reason::inputOutput;
    }
}

} // namespace

Failure systemFailure(const std::string& what, int errorNumber) {
    return {reasonOfErrorNumber(errorNumber), what + ": " + std::strerror(errorNumber)};
}

Failure systemFailure(const std::string& what) { return systemFailure(what, errno); }

Result<void> FileDescriptor::close() {
    const int number = std::exchange(number_, -1);
    // Linux releases the number even if close() fails, EINTR included, so a second attempt would be wrong.
    if (number >= 0 && ::close(number) != 0 && errno != EINTR)
        return systemFailure("cannot finish writing");
    return {};
}

Result<FileDescriptor> openForReading(const std::string& path) {
    FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
    if (!file.isOpen())
        return systemFailure("cannot open " + path);
    struct stat status {};
    if (::fstat(file.number(), &status) != 0)
        return systemFailure("cannot examine " + path);
    if (!S_ISREG(status.st_mode))
        return Failure{Reason::notRegularFile, path + " is not a regular file"};
    return file;
}

} // namespace kestrine
