#include "platform/host/files/DuplicatedDescriptor.h"

#include <fcntl.h>

namespace kestrine {

Result<FileDescriptor> duplicated(int number) {
    FileDescriptor copy(::fcntl(number, F_DUPFD_CLOEXEC, 0));
    if (!copy.isOpen())
        return systemFailure("cannot use the descriptor");
    return copy;
}

} // namespace kestrine
