#include "platform/host/process/DiskWait.h"

#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileDescriptor.h"

#include <algorithm>
#include <array>
#include <dirent.h>
#include <memory>
#include <string>
#include <string_view>
#include <unistd.h>

namespace kestrine {

namespace {

/// The state of a thread, the letter after its name, which is in brackets and may have any characters; 0 if
/// the file cannot be read.
char stateIn(const std::string& path) {
    std::array<char, 512> line{}; // the state stands within the first 30 bytes
    const Result<FileDescriptor> file = openForReading(path);
    const ssize_t count = file ? ::read(file->number(), line.data(), line.size()) : -1;
    const std::string_view text(line.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    const std::size_t nameEnd = text.rfind(") ");
    return nameEnd == std::string_view::npos || nameEnd + 2 >= text.size() ? '\0' : text[nameEnd + 2];
}

} // namespace

bool waitsForDisk(pid_t process) {
    const std::string threads = "/proc/" + std::to_string(process) + "/task";
    const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(threads.c_str()), ::closedir);
    if (folder == nullptr)
        return false;
    while (const dirent* entry = ::readdir(folder.get()))
        if (entry->d_name[0] != '.' && stateIn(threads + "/" + entry->d_name + "/stat") == 'D')
            return true;
    return false;
}

} // namespace kestrine
