#include "platform/host/files/FolderTree.h"

#include "platform/host/files/Folders.h"

namespace kestrine {

Result<std::vector<std::string>> pathsBelow(const std::string& folder) {
    FileDescriptor root = TRY(openFolder(folder));
    std::vector<std::string> paths = TRY(namesIn(root.number()));
    // The list is also the queue of folders to read, so at any depth only two folders are open.
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const std::string path = paths[i];
        const Result<FileDescriptor> below = openSubfolder({root.number(), path});
        if (!below)
            continue;
        const Result<std::vector<std::string>> names = namesIn(below->number());
        for (const std::string& name : names ? *names : std::vector<std::string>())
            paths.push_back(path + "/" + name);
    }
    return paths;
}

} // namespace kestrine
