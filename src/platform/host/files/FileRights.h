// FileRights: who may read and write a file.
#pragma once

#include "platform/host/Result.h"

#include <string>
#include <sys/types.h>

namespace kestrine {

struct FileRights {
    mode_t mode = 0; ///< permission bits
    uid_t owner = 0;
    gid_t group = 0;
};

/// The rights of the file at `path`; links are followed. Fails with notFound if there is none.
Result<FileRights> rightsOfFile(const std::string& path);

/// Gives them to an open file. It is not an error if the system does not permit setting the owner or the
/// group. If the group cannot be set, the group of the file gets no more rights than all users have.
Result<void> giveRights(int file, const FileRights& rights);

} // namespace kestrine
