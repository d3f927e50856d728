#include "platform/host/files/AtomicFile.h"

#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/PublishMechanisms.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

namespace kestrine {

namespace {

/// The outcome of the search for a free name: the path, and the error number if the search failed.
struct Naming {
    int error = 0;
    std::string path;
};

/// Calls `giveName` with one candidate name after another until one is free.
Naming takeFirstFree(const CandidatePaths& candidates,
                     const std::function<int(const std::string& name)>& giveName) {
    constexpr int maxRepetitions = 3; // another process may have released the name in the meantime
    Naming naming;
    int repetitions = 0;
    for (unsigned attempt = 0;; ++attempt) {
        std::string path = candidates(attempt);
        repetitions = attempt > 0 && path == naming.path ? repetitions + 1 : 0;
        if (repetitions == maxRepetitions)
            return {EEXIST, std::move(path)};
        naming.path = std::move(path);
        naming.error = checkPath(naming.path) ? giveName(nameOf(naming.path)) : ENOENT;
        if (naming.error != EEXIST)
            return naming;
    }
}

Result<std::string> pathOf(const Naming& naming) {
    if (naming.error != 0)
        return systemFailure("cannot create " + naming.path, naming.error);
    return naming.path;
}

using OptionalRights = std::optional<FileRights>;

/// The mode with which a file is created. With `rights`, only the owner has access until they are set;
/// without, the umask decides.
mode_t firstModeFor(const OptionalRights& rights) { return rights ? 0600 : 0666; }

/// Not every file system can store them.
void giveIfPossible(int file, const OptionalRights& rights) {
    if (rights)
        (void)giveRights(file, *rights);
}

/// A nameless file with the content. Empty if nameless files are not supported here.
std::optional<Result<NamelessFile>> writtenNameless(int folder, const std::string& folderPath,
                                                    const NewContent& content, const OptionalRights& rights) {
    Result<NamelessFile> file = NamelessFile::create(folder, O_WRONLY, firstModeFor(rights), folderPath);
    if (!file && file.failure().reason == Reason::unsupported)
        return std::nullopt;
    if (file)
        if (const Result<void> written = content.writeTo(file->descriptor()); !written)
            return written.failure();
    return file;
}

/// Empty if nameless files are not supported here, or this one can have no name in the folder.
std::optional<Result<std::string>> publishNameless(const NamelessFile& file, int folder,
                                                   const CandidatePaths& candidates, Durability durability,
                                                   const OptionalRights& rights) {
    giveIfPossible(file.descriptor(), rights);
    TRY(finishWriting(file.descriptor(), durability));
    const Naming naming = takeFirstFree(candidates, [&](const std::string& name) {
        return file.giveName({folder, name});
    });
    if (NamelessFile::isMissing(naming.error))
        return std::nullopt;
    return pathOf(naming);
}

std::optional<Result<std::string>> publishNameless(int folder, const std::string& folderPath,
                                                   const CandidatePaths& candidates,
                                                   const NewContent& content, Durability durability,
                                                   const OptionalRights& rights) {
    if (content.file() != nullptr)
        return publishNameless(*content.file(), folder, candidates, durability, rights);
    const std::optional<Result<NamelessFile>> file = writtenNameless(folder, folderPath, content, rights);
    if (!file)
        return std::nullopt;
    if (!*file)
        return file->failure();
    return publishNameless(**file, folder, candidates, durability, rights);
}

/// Takes away what `mode` does not allow.
Result<void> restrictMode(int file, mode_t mode) {
    struct stat status {};
    if (::fstat(file, &status) != 0
        || ((status.st_mode & 07777 & ~mode) != 0 && ::fchmod(file, status.st_mode & mode) != 0))
        return systemFailure("cannot set the permissions of a new file");
    return {};
}

/// A file with the content, this hidden name and at most this mode.
Result<TemporaryFile> temporaryFileWith(const NewContent& content, int folder, mode_t mode,
                                        const std::string& folderPath, std::string name = temporaryName()) {
    if (content.file() != nullptr) {
        TRY(restrictMode(content.file()->descriptor(), mode));
        Result<TemporaryFile> named = TemporaryFile::of(*content.file(), folder, name);
        if (named || named.failure().reason != Reason::unsupported)
            return named;
    }
    TemporaryFile file = TRY(TemporaryFile::create(folder, mode, folderPath, std::move(name)));
    TRY(content.writeTo(file.descriptor()));
    return file;
}

Result<TemporaryFile> writeNamed(int folder, const std::string& folderPath, const NewContent& content,
                                 Durability durability, const OptionalRights& rights,
                                 std::string name = temporaryName()) {
    TemporaryFile file =
        TRY(temporaryFileWith(content, folder, firstModeFor(rights), folderPath, std::move(name)));
    giveIfPossible(file.descriptor(), rights);
    TRY(finishWriting(file.descriptor(), durability));
    return file;
}

Result<std::string> giveFinalName(TemporaryFile& file, const CandidatePaths& candidates,
                                  RenameMechanisms mechanisms) {
    const Naming naming = takeFirstFree(candidates, [&](const std::string& name) {
        return renameWithoutReplacing(file.entry(), {file.entry().folder, name}, mechanisms);
    });
    if (naming.error == 0)
        file.wasRenamed();
    return pathOf(naming);
}

Result<std::string> publishNamed(int folder, const std::string& folderPath, const CandidatePaths& candidates,
                                 const NewContent& content, Durability durability,
                                 const OptionalRights& rights, RenameMechanisms mechanisms) {
    TemporaryFile file = TRY(writeNamed(folder, folderPath, content, durability, rights));
    return giveFinalName(file, candidates, mechanisms);
}

/// Follows a chain of symbolic links to its final path, which need not exist.
Result<std::string> followLinks(std::string path) {
    constexpr int maxLinks = 40; // the kernel has the same limit
    for (int links = 0; links < maxLinks; ++links) {
        std::array<char, 4096> target; // PATH_MAX: no target is longer
        const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
        if (length < 0)
            return path;
        const std::string next(target.data(), static_cast<std::size_t>(length));
        path = next.starts_with('/') ? next : joinedPath(folderOf(path), next);
    }
    return systemFailure("cannot follow " + path, ELOOP);
}

/// The status of the file to replace; nullopt if the name is free.
Result<std::optional<struct stat>> examineReplaced(const FolderEntry& entry) {
    Result<struct stat> status = statusOf(entry);
    if (!status && status.failure().reason == Reason::notFound)
        return std::optional<struct stat>();
    const struct stat replaced = TRY(std::move(status));
    if (!S_ISREG(replaced.st_mode))
        return Failure{Reason::notRegularFile, entry.name + " is not a regular file"};
    if (::faccessat(entry.folder, entry.name.c_str(), W_OK, AT_EACCESS) != 0)
        return systemFailure("cannot write " + entry.name);
    return std::optional(replaced);
}

/// A file that exists keeps its mode; `newMode` minus the umask is that of a new file.
Result<void> replaceEntry(const FolderEntry& entry, const std::string& folderPath, const NewContent& content,
                          Durability durability, mode_t newMode) {
    std::optional<struct stat> replaced = TRY(examineReplaced(entry));
    TemporaryFile file = TRY(temporaryFileWith(content, entry.folder, replaced ? 0600 : newMode, folderPath));
    if (replaced)
        TRY(giveRights(file.descriptor(), {replaced->st_mode & 07777, replaced->st_uid, replaced->st_gid}));
    TRY(finishWriting(file.descriptor(), durability));
    if (::renameat(entry.folder, file.entry().name.c_str(), entry.folder, entry.name.c_str()) != 0)
        return systemFailure("cannot replace " + entry.name);
    file.wasRenamed();
    return durability == Durability::synced ? syncFolder(entry.folder) : Result<void>();
}

Result<void> replaceTarget(const std::string& target, const NewContent& content, Durability durability,
                           mode_t newMode) {
    const std::string folderPath = folderOf(target);
    const FileDescriptor folder = TRY(openFolder(folderPath));
    return replaceEntry({folder.number(), nameOf(target)}, folderPath, content, durability, newMode);
}

} // namespace

Result<std::string> publishNewFile(const CandidatePaths& candidates, const NewContent& content,
                                   Durability durability, PublishMechanisms mechanisms,
                                   const OptionalRights& rights) {
    const std::string first = candidates(0);
    TRY(checkPath(first));
    const std::string folderPath = folderOf(first);
    FileDescriptor folder = TRY(openFolder(folderPath));
    std::optional<Result<std::string>> published;
    if (mechanisms.namelessFile)
        published = publishNameless(folder.number(), folderPath, candidates, content, durability, rights);
    if (!published)
        published = publishNamed(folder.number(), folderPath, candidates, content, durability, rights,
                                 mechanisms.rename);
    if (!published->ok() || durability == Durability::cached)
        return *std::move(published);
    TRY(syncFolder(folder.number()));
    return *std::move(published);
}

Result<std::string> publishNewFile(const CandidatePaths& candidates, const NewContent& content,
                                   Durability durability, const OptionalRights& rights) {
    return publishNewFile(candidates, content, durability, PublishMechanisms(), rights);
}

Result<StagedFile> StagedFile::write(const std::string& folder, const NewContent& content,
                                     std::string hiddenName, const OptionalRights& rights) {
    FileDescriptor opened = TRY(openFolder(folder));
    TemporaryFile file =
        TRY(writeNamed(opened.number(), folder, content, Durability::synced, rights, std::move(hiddenName)));
    return StagedFile(std::move(opened), std::move(file));
}

Result<std::string> StagedFile::publish(const CandidatePaths& candidates) {
    std::string path = TRY(giveFinalName(file_, candidates, {}));
    TRY(syncFolder(folder_.number()));
    return path;
}

Result<void> replaceFile(const std::string& path, const NewContent& content, Durability durability) {
    TRY(checkPath(path));
    const std::string target = TRY(followLinks(path));
    TRY(makePrivateFolders(folderOf(target)));
    return replaceTarget(target, content, durability, 0600);
}

Result<void> writeFile(const std::string& path, const NewContent& content, Overwrite overwrite,
                       Durability durability) {
    if (overwrite == Overwrite::no) {
        TRY(publishNewFile([&](unsigned) { return path; }, content, durability));
        return {};
    }
    TRY(checkPath(path));
    return replaceTarget(TRY(followLinks(path)), content, durability, 0666);
}

} // namespace kestrine
