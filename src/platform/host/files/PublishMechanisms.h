// The mechanisms that publishNewFile() uses, which file systems support to different degrees.
#pragma once

#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/ExclusiveRename.h"

namespace kestrine {

/// How a finished file may get its name. The mechanisms are tried in this order.
struct PublishMechanisms {
    bool namelessFile = true; ///< a file without a name, linked when complete; a crash leaves nothing behind
    RenameMechanisms rename;  ///< a hidden temporary file that is renamed when complete
};

/// publishNewFile() limited to `mechanisms`.
Result<std::string> publishNewFile(const CandidatePaths& candidates, const NewContent& content,
                                   Durability durability, PublishMechanisms mechanisms,
                                   const std::optional<FileRights>& rights = {});

} // namespace kestrine
