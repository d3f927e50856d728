// Preloaded into one of our programs: renaming a finished temporary file fails, as on a disk that fails at
// that moment. Other files are renamed as usual.
#include <cerrno>
#include <string_view>
#include <sys/syscall.h>
#include <unistd.h>

extern "C" __attribute__((visibility("default"))) int
renameat2(int oldFolder, const char* oldName, int newFolder, const char* newName, unsigned flags) noexcept {
    if (std::string_view(oldName).ends_with(".kestrine-tmp")) {
        errno = EIO;
        return -1;
    }
    return static_cast<int>(::syscall(SYS_renameat2, oldFolder, oldName, newFolder, newName, flags));
}
