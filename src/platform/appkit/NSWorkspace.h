// NSWorkspace: file operations of the desktop.
#pragma once

#include "platform/foundation/text/NSString.h"
#include "platform/host/trash/TrashFolder.h"

#include <mutex>
#include <vector>

namespace kestrine {

inline constexpr const char16_t* NSWorkspaceRecycleOperation = u"recycle";
inline constexpr const char16_t* NSWorkspaceMoveOperation = u"move";
inline constexpr const char16_t* NSWorkspaceCopyOperation = u"copy";
inline constexpr const char16_t* NSWorkspaceLinkOperation = u"link";

class NSWorkspace {
public:
    /// `sharedWorkspace`.
    static NSWorkspace& shared();

    /// The lock that callers hold around an operation (the platform's per-object mutual exclusion).
    std::recursive_mutex& lock() { return lock_; }

    /// `performFileOperation:source:destination:files:tag:`: moves, copies or links `files` (names in the
    /// folder `source`) into the folder `destination`, without replacing anything there, or moves them to the
    /// trash. Returns whether everything was done; a move, copy or link stops at the first failure, the
    /// recycle operation continues with the next file. Other operations are refused. `tag` (may be null)
    /// becomes 0 on success and negative after a failure. Blocks until the operation has ended.
    bool performFileOperation(const NSString& operation, const NSString& source, const NSString& destination,
                              const std::vector<NSString>& files, int* tag = nullptr);

    /// The recycle operation for one file. Returns its place in the trash, or why it was not moved.
    Result<TrashedItem> recycle(const NSString& source, const NSString& file);

    /// `isFilePackageAtPath:`: whether the path is a folder that the desktop shows as one file.
    bool isFilePackageAtPath(const NSString& fullPath) const;

private:
    std::recursive_mutex lock_;
};

} // namespace kestrine
