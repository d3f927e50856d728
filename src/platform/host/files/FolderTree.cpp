#include "platform/host/files/FolderTree.h"

#include "platform/host/files/Folders.h"

namespace kestrine {

Result<std::vector<std::string>> pathsBelow(const std::string& folder) {
    FileDescriptor root = TRY(openFolder(folder));
    std::vector<std::string> paths = TRY(namesIn(root.number()));
    // The list is its own queue: what is in a folder is put behind everything that is known so far. So only
    // one folder is open besides the root, however deep the tree.
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
