// NSWorkspace: what the desktop does with files on a program's behalf.
#pragma once

#include "platform/foundation/NSString.h"

#include <mutex>
#include <vector>

namespace kestrine {

inline constexpr const char16_t* NSWorkspaceRecycleOperation = u"recycle";

class NSWorkspace {
public:
    /// `sharedWorkspace`.
    static NSWorkspace& shared();

    /// The lock that callers hold around an operation (the platform's per-object mutual exclusion).
    std::recursive_mutex& lock() { return lock_; }

    /// `performFileOperation:source:destination:files:tag:`: for the recycle operation moves each of `files`
    /// (names in the folder `source`) to the trash and tells whether all of them went. Other operations are
    /// refused.
    bool performFileOperation(const NSString& operation, const NSString& source, const NSString& destination,
                              const std::vector<NSString>& files);

private:
    std::recursive_mutex lock_;
};

} // namespace kestrine
