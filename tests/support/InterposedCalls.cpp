#include "tests/support/InterposedCalls.h"

#include <cerrno>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrine::testing {

namespace {

InterposedCalls* current = nullptr;

template <class... Arguments>
int call(long number, Arguments... arguments) {
    return static_cast<int>(::syscall(number, arguments...));
}

/// What a function of the C library returns when it fails.
int failedWith(int error) {
    errno = error;
    return -1;
}

/// Returns `result`, after recording the call if it succeeded.
int recorded(int result, const std::string& call) {
    if (result == 0 && current != nullptr)
        current->record(call);
    return result;
}

std::string synced(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0)
        return "sync";
    if (S_ISREG(status.st_mode))
        return "sync " + std::to_string(status.st_size) + " bytes";
    std::error_code noProcessTable;
    const std::string link = "/proc/self/fd/" + std::to_string(file);
    return "sync " + std::filesystem::read_symlink(link, noProcessTable).string();
}

int recordedSync(int result, int file) { return result == 0 ? recorded(result, synced(file)) : result; }

bool isTemporary(std::string_view name) { return name.ends_with(".kestrine-tmp"); }

int recordedName(int result, const char* newName) { return recorded(result, std::string("name ") + newName); }

/// Returns the error number with which the rename fails; 0 if it is made.
int errorOfRename(const char* oldName, const char* newName) {
    return current != nullptr && current->onRename ? current->onRename(oldName, newName) : 0;
}

int recordedRename(int result, const char* oldName, const char* newName) {
    if (isTemporary(newName))
        return isTemporary(oldName) ? result : recorded(result, std::string("hide ") + oldName);
    return recordedName(result, newName);
}

} // namespace

InterposedCalls::InterposedCalls() { current = this; }

InterposedCalls::~InterposedCalls() { current = nullptr; }

std::vector<std::string> InterposedCalls::made() const {
    const std::lock_guard lock(mutex_);
    return made_;
}

void InterposedCalls::record(const std::string& call) {
    const std::lock_guard lock(mutex_);
    made_.push_back(call);
}

} // namespace kestrine::testing

using namespace kestrine::testing;

#pragma GCC visibility push(default)

extern "C" {

int fsync(int file) {
    if (current != nullptr && current->onSync)
        if (const int error = current->onSync(file); error != 0)
            return failedWith(error);
    return recordedSync(call(SYS_fsync, file), file);
}

int fdatasync(int file) { return recordedSync(call(SYS_fdatasync, file), file); }

int linkat(int oldFolder, const char* oldName, int newFolder, const char* newName, int flags) noexcept {
    return recordedName(call(SYS_linkat, oldFolder, oldName, newFolder, newName, flags), newName);
}

int renameat2(int oldFolder, const char* oldName, int newFolder, const char* newName,
              unsigned flags) noexcept {
    if (const int error = errorOfRename(oldName, newName); error != 0)
        return failedWith(error);
    return recordedRename(call(SYS_renameat2, oldFolder, oldName, newFolder, newName, flags), oldName,
                          newName);
}

int renameat(int oldFolder, const char* oldName, int newFolder, const char* newName) noexcept {
    if (const int error = errorOfRename(oldName, newName); error != 0)
        return failedWith(error);
    return recordedRename(call(SYS_renameat, oldFolder, oldName, newFolder, newName), oldName, newName);
}

int unlinkat(int folder, const char* name, int flags) noexcept {
    const int result = call(SYS_unlinkat, folder, name, flags);
    return isTemporary(name) ? result : recorded(result, std::string("remove ") + name);
}

} // extern "C"

#pragma GCC visibility pop
