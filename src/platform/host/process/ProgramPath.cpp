#include "platform/host/process/ProgramPath.h"

#include "platform/host/files/FileStatus.h"
#include "platform/host/process/Environment.h"

#include <algorithm>
#include <dlfcn.h>
#include <filesystem>
#include <unistd.h>

namespace kestrine {

std::string pathOfThisProgram() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).string();
}

std::string pathOfThisLibrary() {
    Dl_info found{};
    if (::dladdr(reinterpret_cast<const void*>(&pathOfThisLibrary), &found) == 0 || found.dli_fname == nullptr
        || found.dli_fname[0] != '/')
        return "";
    std::error_code error;
    return std::filesystem::canonical(found.dli_fname, error).string();
}

std::vector<std::string> possiblePathsOf(const std::string& program) {
    if (program.find('/') != std::string::npos)
        return {program};
    const std::string path = Environment::ofProcess().variable("PATH").value_or("/bin:/usr/bin");
    std::vector<std::string> files;
    for (std::size_t begin = 0; begin <= path.size();) {
        const std::size_t end = std::min(path.find(':', begin), path.size());
        const std::string folder = path.substr(begin, end - begin);
        files.push_back((folder.empty() ? "." : folder) + "/" + program);
        begin = end + 1;
    }
    return files;
}

bool programExists(const std::string& program) {
    return std::ranges::any_of(possiblePathsOf(program), [](const std::string& path) {
        return ::access(path.c_str(), X_OK) == 0 && !folderExists(path);
    });
}

} // namespace kestrine
