#include "platform/host/trash/TrashSizes.h"

#include "platform/host/StringBytes.h"
#include "platform/host/files/ByteReader.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/TemporaryFile.h"
#include "platform/host/trash/TrashInfo.h"

#include <cstdio>
#include <fcntl.h>
#include <set>
#include <sstream>
#include <utility>

namespace kestrine {

namespace {

constexpr const char* sizesName = "directorysizes";
constexpr std::uint64_t maxSizesFile = 16 * 1024 * 1024;
constexpr std::uint64_t blockSize = 512; // the unit of st_blocks

using FileIdentity = std::pair<dev_t, ino_t>;

std::uint64_t diskSpaceOf(const FolderEntry& entry, std::set<FileIdentity>& counted, unsigned depth) {
    Result<struct stat> status = statusOf(entry);
    if (!status || depth > maxFolderDepth)
        return 0;
    const bool isFolder = S_ISDIR(status->st_mode);
    if (!isFolder && status->st_nlink > 1 && !counted.emplace(status->st_dev, status->st_ino).second)
        return 0;
    std::uint64_t space = static_cast<std::uint64_t>(status->st_blocks) * blockSize;
    if (!isFolder)
        return space;
    if (Result<FileDescriptor> folder = openSubfolder(entry))
        if (Result<std::vector<std::string>> names = namesIn(folder->number()))
            for (const std::string& name : *names)
                space += diskSpaceOf({folder->number(), name}, counted, depth + 1);
    return space;
}

/// The existing lines, except those for `name`.
std::string otherLines(int trash, const std::string& name) {
    FileDescriptor file(::openat(trash, sizesName, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    Result<std::shared_ptr<const ByteReader>> reader = readerOfFile(std::move(file));
    Result<Bytes> bytes = reader ? (*reader)->readAll(maxSizesFile) : reader.failure();
    if (!bytes)
        return "";
    std::istringstream lines(std::string(bytes->begin(), bytes->end()));
    std::string kept;
    for (std::string line; std::getline(lines, line);)
        if (!line.ends_with(" " + name))
            kept += line + "\n";
    return kept;
}

} // namespace

std::uint64_t diskSpaceOf(const FolderEntry& entry) {
    std::set<FileIdentity> counted;
    return diskSpaceOf(entry, counted, 0);
}

void recordTrashedFolderSize(int trash, const FolderEntry& folder, std::time_t recordTime) {
    const std::string name = percentEncoded(folder.name);
    const std::string line =
        std::to_string(diskSpaceOf(folder)) + " " + std::to_string(recordTime) + " " + name + "\n";
    const std::string text = otherLines(trash, name) + line;
    Result<TemporaryFile> file = TemporaryFile::create(trash, 0600, "the trash");
    if (!file || !writeAll(file->descriptor(), bytesOf(text)))
        return;
    if (::renameat(trash, file->entry().name.c_str(), trash, sizesName) == 0)
        file->wasRenamed();
}

} // namespace kestrine
