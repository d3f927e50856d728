// Files that appear whole or not at all.
// publishNewFile never replaces anything; replaceFile is for the one file that is meant to be replaced.
#pragma once

#include "platform/host/Bytes.h"
#include "platform/host/files/ExclusiveRename.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/TemporaryFile.h"
#include "platform/host/Result.h"

#include <functional>
#include <string>

namespace kestrine {

/// The path to try as attempt 0, 1, 2, ... All of them lie in the folder of the first. A generator that
/// says the same path four times running has no further one.
using CandidatePaths = std::function<std::string(unsigned attempt)>;

/// How a finished file may get its name, best first; tests switch mechanisms off to reach the later ones.
struct PublishMechanisms {
    bool namelessFile = true; ///< a file without a name, linked when complete: nothing is ever left behind
    RenameMechanisms rename;  ///< else a hidden temporary file is renamed
};

/// Writes a new file (rights 0666 less the umask) and gives it the first candidate whose name is free.
/// Answers the path it got, or why there is no file: noSpace, notPermitted, notFound (no such folder),
/// malformed (empty path or zero byte), tooLarge (name or file too long), alreadyExists (no further
/// candidate), inputOutput. Only when the last step, syncing the folder, fails does the complete file
/// stay in spite of the failure.
Result<std::string> publishNewFile(const CandidatePaths& candidates, ByteView content, Durability durability,
                                   PublishMechanisms mechanisms = {});

/// A new file that is complete and on the disk under a hidden name until it is published; without that it goes
/// away again. For what may begin only when nothing but a name is missing. Move-only.
class StagedFile {
public:
    /// In `folder`, with the rights 0666 less the umask. Fails as publishNewFile does.
    static Result<StagedFile> write(const std::string& folder, ByteView content);

    /// Once: gives it the first candidate whose name is free, and syncs the folder. The candidates lie in the
    /// folder it was written to. Answers the path it got, and fails as publishNewFile does.
    Result<std::string> publish(const CandidatePaths& candidates);

private:
    StagedFile(FileDescriptor folder, TemporaryFile file)
        : folder_(std::move(folder)), file_(std::move(file)) {}

    FileDescriptor folder_;
    TemporaryFile file_;
};

/// Replaces the content of `path` in one step, synced. An existing file keeps its rights, and its owner
/// where that is possible; a symbolic link stays and its target is replaced; a new file is for the user
/// alone (0600), as are the folders that had to be made for it (0700). Fails with notPermitted for a
/// write-protected file and notRegularFile for anything that is no file.
Result<void> replaceFile(const std::string& path, ByteView content);

} // namespace kestrine
