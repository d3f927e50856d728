#include "tests/platform/host/SystemCallRecorder.h"

#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <optional>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace kestrine::testing {

namespace {

std::mutex mutex;
std::optional<std::vector<std::string>> recorded; // guarded by the mutex; absent if nobody records

void record(const std::string& call) {
    const std::lock_guard lock(mutex);
    if (recorded)
        recorded->push_back(call);
}

std::string synced(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0)
        return "sync";
    if (S_ISREG(status.st_mode))
        return "sync " + std::to_string(status.st_size) + " bytes";
    std::error_code noProcessTable;
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
    return "sync " + std::filesystem::read_symlink(link, noProcessTable).string();
}

bool isTemporary(const std::string& name) { return name.ends_with(".kestrine-tmp"); }

template <class... Arguments>
int call(long number, Arguments... arguments) {
    return static_cast<int>(::syscall(number, arguments...));
}

} // namespace

SystemCallRecorder::SystemCallRecorder() {
    const std::lock_guard lock(mutex);
    recorded.emplace();
}

SystemCallRecorder::~SystemCallRecorder() {
    const std::lock_guard lock(mutex);
    recorded.reset();
}

std::vector<std::string> SystemCallRecorder::calls() const {
    const std::lock_guard lock(mutex);
    return *recorded;
}

} // namespace kestrine::testing

// These functions replace those of the C library in the test program.

using namespace kestrine::testing;

extern "C" {

int fsync(int file) {
    const int result = call(SYS_fsync, file);
    if (result == 0)
        record(synced(file));
    return result;
}

int fdatasync(int file) {
    const int result = call(SYS_fdatasync, file);
    if (result == 0)
        record(synced(file));
    return result;
}

int linkat(int oldFolder, const char* oldName, int newFolder, const char* newName, int flags) noexcept {
    const int result = call(SYS_linkat, oldFolder, oldName, newFolder, newName, flags);
    if (result == 0)
        record(std::string("name ") + newName);
    return result;
}

int renameat2(int oldFolder, const char* oldName, int newFolder, const char* newName,
              unsigned flags) noexcept {
    const int result = call(SYS_renameat2, oldFolder, oldName, newFolder, newName, flags);
    if (result == 0)
        record(std::string("name ") + newName);
    return result;
}

int renameat(int oldFolder, const char* oldName, int newFolder, const char* newName) noexcept {
    const int result = call(SYS_renameat, oldFolder, oldName, newFolder, newName);
    if (result == 0)
        record(std::string("name ") + newName);
    return result;
}

int unlinkat(int folder, const char* name, int flags) noexcept {
    const int result = call(SYS_unlinkat, folder, name, flags);
    if (result == 0 && !isTemporary(name))
        record(std::string("remove ") + name);
    return result;
}

} // extern "C"
