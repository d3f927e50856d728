// Files that appear complete or not at all. publishNewFile() never replaces a file, replaceFile() replaces
// one, and writeFile() does what its argument says.
#pragma once

#include "platform/host/Result.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileDescriptor.h"
#include "platform/host/files/FileRights.h"
#include "platform/host/files/NewContent.h"
#include "platform/host/files/TemporaryFile.h"

#include <functional>
#include <optional>
#include <string>

namespace kestrine {

/// The path to try as attempt 0, 1, 2 and so on, all in the same folder. A generator that returns the same
/// path four times in a row has no further candidates.
using CandidatePaths = std::function<std::string(unsigned attempt)>;

/// Writes a new file, with these rights or else those of any new file (0666 minus the umask), and gives it
/// the first candidate name that is free. Content in a nameless file is not written again where that file can
/// get the name; without `rights` it keeps its own. Returns the chosen path. Failures: noSpace, notPermitted,
/// notFound (no such folder), malformed (empty path or zero byte), tooLarge (name or file too long),
/// alreadyExists (no further candidate), inputOutput. After a failure there is no new file, with one
/// exception: if only the last step fails, syncing the folder, the complete file stays.
Result<std::string> publishNewFile(const CandidatePaths& candidates, const NewContent& content,
                                   Durability durability, const std::optional<FileRights>& rights = {});

/// A new file that is complete and on the disk under a hidden name until it is published. Without publish()
/// the destructor removes it. For work that may start only when nothing but the name is missing. Move-only.
class StagedFile {
public:
    /// Writes the file into `folder`, with rights as above. Fails like publishNewFile. `hiddenName`
    /// must come from temporaryName(); a crash may leave a file of that name.
    static Result<StagedFile> write(const std::string& folder, const NewContent& content,
                                    std::string hiddenName = temporaryName(),
                                    const std::optional<FileRights>& rights = {});

    /// Call once. Gives the file the first candidate name that is free, in the folder it was written to, and
    /// syncs the folder. Returns the chosen path, and fails like publishNewFile.
    Result<std::string> publish(const CandidatePaths& candidates);

private:
    StagedFile(FileDescriptor folder, TemporaryFile file)
        : folder_(std::move(folder)), file_(std::move(file)) {}

    FileDescriptor folder_;
    TemporaryFile file_;
};

/// Replaces the content of `path` in one step. An existing file keeps its mode, and its owner
/// where that is possible. A symbolic link stays and its target is replaced. A new file has the mode 0600,
/// and folders that had to be created for it have 0700. Fails with notPermitted for a write-protected file
/// and with notRegularFile for anything that is not a regular file.
Result<void> replaceFile(const std::string& path, const NewContent& content,
                         Durability durability = Durability::synced);

enum class Overwrite : bool { no, yes };

/// Writes the file `path`, in one step, into a folder that exists. A new file has the mode 0666 minus the
/// umask. If the name is taken: with Overwrite::no, fails with alreadyExists, also if another process takes
/// it in the meantime; with Overwrite::yes, replaces the file like replaceFile().
Result<void> writeFile(const std::string& path, const NewContent& content, Overwrite overwrite,
                       Durability durability);

} // namespace kestrine
