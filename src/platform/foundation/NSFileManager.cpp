#include "platform/foundation/NSFileManager.h"

#include "platform/host/FileStatus.h"
#include "platform/host/Folders.h"

namespace kestrine {

NSFileManager& NSFileManager::defaultManager() {
    static NSFileManager manager;
    return manager;
}

bool NSFileManager::fileExistsAtPath(const NSString& path) const { return itemExists(path.utf8()); }

bool NSFileManager::createDirectoryAtPath(const NSString& path) const { return makeFolder(path.utf8()).ok(); }

} // namespace kestrine
