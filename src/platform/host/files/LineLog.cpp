#include "platform/host/files/LineLog.h"

#include "platform/host/StringBytes.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"
#include "platform/host/files/TemporaryFile.h"
#include "platform/host/process/StopSignals.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace kestrine {

namespace {

constexpr int logFlags = O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC | O_NOCTTY;

Result<FileDescriptor> openLog(const std::string& path, int flags) {
    FileDescriptor file(::open(path.c_str(), flags, 0600));
    if (!file.isOpen())
        return systemFailure("cannot write " + path);
    return file;
}

/// Whether the path still names the open file; another process may have rewritten it.
Result<bool> isAt(const std::string& path, int file) {
    struct stat opened {
    }, there{};
    if (::fstat(file, &opened) != 0)
        return systemFailure("cannot examine " + path);
    if (::stat(path.c_str(), &there) == 0)
        return isSameItem(opened, there);
    return errno == ENOENT ? Result<bool>(false) : systemFailure("cannot examine " + path);
}

/// Tries again and again, so that a stop signal ends the wait.
Result<void> lock(int file, const std::string& path, const std::function<bool()>& mayWait) {
    constexpr std::chrono::milliseconds pause{50};
    bool isWaiting = false;
    while (::flock(file, LOCK_EX | LOCK_NB) != 0) {
        const int error = errno;
        if (error != EWOULDBLOCK && error != EINTR)
            return systemFailure("cannot lock " + path, error);
        const bool isTaken = error == EWOULDBLOCK;
        if (isTaken && !isWaiting && !mayWait())
            return Failure{Reason::alreadyExists, "another run uses " + path};
        if (StopSignalsNoted::noted() != 0)
            return Failure{Reason::refused, "the wait for " + path + " was stopped"};
        isWaiting = isWaiting || isTaken;
        if (isTaken)
            std::this_thread::sleep_for(pause);
    }
    return {};
}

Result<std::string> contentOf(int file, const std::string& path) {
    struct stat status {};
    if (::fstat(file, &status) != 0)
        return systemFailure("cannot read " + path);
    std::string content(static_cast<std::size_t>(status.st_size), '\0');
    const PartRead read = readAt(file, {reinterpret_cast<std::uint8_t*>(content.data()), content.size()}, 0);
    if (read.error != 0)
        return systemFailure("cannot read " + path, read.error);
    content.resize(read.bytes);
    return content;
}

std::vector<std::string> linesIn(const std::string& content) {
    std::vector<std::string> lines;
    for (std::size_t begin = 0, end = 0; (end = content.find('\n', begin)) != std::string::npos;
         begin = end + 1)
        lines.push_back(content.substr(begin, end - begin));
    return lines;
}

} // namespace

Result<LineLog> LineLog::open(const std::string& path, const std::function<bool()>& mayWait) {
    for (;;) {
        FileDescriptor file = TRY(openLog(path, logFlags));
        TRY(lock(file.number(), path, mayWait));
        if (TRY(isAt(path, file.number())))
            return LineLog(path, std::move(file));
    }
}

Result<LineLog> LineLog::create(const std::string& path) {
    FileDescriptor file = TRY(openLog(path, logFlags | O_EXCL));
    TRY(lock(file.number(), path, [] { return true; }));
    const FileDescriptor folder = TRY(openFolder(folderOf(path)));
    TRY(syncFolder(folder.number()));
    return LineLog(path, std::move(file));
}

Result<std::vector<std::string>> LineLog::lines() const {
    return linesIn(TRY(contentOf(file_.number(), path_)));
}

Result<std::vector<std::string>> LineLog::linesOf(const std::string& path) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    if (!file.isOpen() && errno == ENOENT)
        return std::vector<std::string>();
    if (!file.isOpen())
        return systemFailure("cannot read " + path);
    return linesIn(TRY(contentOf(file.number(), path)));
}

Result<void> LineLog::begin(const std::string& line) {
    const std::string content = TRY(contentOf(file_.number(), path_));
    if (!line.starts_with(content))
        return Failure{Reason::malformed, path_ + " contains something else"};
    if (!content.empty() && ::ftruncate(file_.number(), 0) != 0)
        return systemFailure("cannot write " + path_);
    return append(line, Durability::cached);
}

Result<void> LineLog::append(const std::string& line, Durability durability) {
    std::string text = line + "\n";
    if (!endsInLine_) {
        struct stat status {};
        char last = '\n';
        if (::fstat(file_.number(), &status) == 0 && status.st_size > 0)
            (void)(::pread(file_.number(), &last, 1, status.st_size - 1) == 1);
        text.insert(0, last == '\n' ? "" : "\n");
    }
    endsInLine_ = false;
    TRY(writeAll(file_.number(), bytesOf(text)));
    endsInLine_ = true;
    if (durability == Durability::synced && ::fdatasync(file_.number()) != 0)
        return systemFailure("cannot write " + path_ + " to the disk");
    return {};
}

Result<void> LineLog::rewrite(const std::vector<std::string>& lines) {
    const std::string folderPath = folderOf(path_);
    const FileDescriptor folder = TRY(openFolder(folderPath));
    TemporaryFile file = TRY(TemporaryFile::create(folder.number(), 0600, folderPath));
    std::string text;
    for (const std::string& line : lines)
        text += line + "\n";
    TRY(writeAll(file.descriptor(), bytesOf(text)));
    TRY(finishWriting(file.descriptor(), Durability::synced));
    FileDescriptor next =
        TRY(openLog(joinedPath(folderPath, file.entry().name), O_RDWR | O_APPEND | O_CLOEXEC));
    TRY(lock(next.number(), path_, [] { return true; }));
    if (::renameat(folder.number(), file.entry().name.c_str(), folder.number(), nameOf(path_).c_str()) != 0)
        return systemFailure("cannot replace " + path_);
    file.wasRenamed();
    file_ = std::move(next);
    endsInLine_ = true;
    return {};
}

} // namespace kestrine
