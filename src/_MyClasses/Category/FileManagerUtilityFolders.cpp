#include "_MyClasses/Category/FileManagerUtility.h"

namespace kestrine::myUtility {

void makeFoldersToPath(NSFileManager& manager, const NSString& path) {
    if (manager.fileExistsAtPath(path))
        return;
    const std::vector<NSString> components = path.pathComponents();
    if (components.size() < 2)
        return;
    NSString current = components.front();
    for (std::size_t i = 1; i < components.size(); ++i) {
        current = current.appendingPathComponent(components[i]);
        if (!manager.fileExistsAtPath(current))
            manager.createDirectoryAtPath(current);
    }
}

} // namespace kestrine::myUtility
