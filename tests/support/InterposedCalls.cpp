#include "tests/support/InterposedCalls.h"

#include <cerrno>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrine::testing {

namespace {

InterposedCalls* current = nullptr;

/// What a function of the C library answers.
int failedWith(int error) {
    errno = error;
    return -1;
}

} // namespace

InterposedCalls::InterposedCalls() { current = this; }

InterposedCalls::~InterposedCalls() { current = nullptr; }

} // namespace kestrine::testing

#pragma GCC visibility push(default)

extern "C" int fsync(int file) {
    using namespace kestrine::testing;
    if (current != nullptr && current->onSync)
        if (const int error = current->onSync(file); error != 0)
            return failedWith(error);
    return static_cast<int>(::syscall(SYS_fsync, file));
}

extern "C" int renameat2(int oldFolder, const char* oldName, int newFolder, const char* newName,
                         unsigned flags) noexcept {
    using namespace kestrine::testing;
    if (current != nullptr && current->onRename)
        if (const int error = current->onRename(oldName, newName); error != 0)
            return failedWith(error);
    return static_cast<int>(::syscall(SYS_renameat2, oldFolder, oldName, newFolder, newName, flags));
}

#pragma GCC visibility pop
