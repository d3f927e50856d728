#include "platform/foundation/NSTask.h"

#include "platform/foundation/NSException.h"
#include "platform/host/files/PathParts.h"

namespace kestrine {

namespace {

/// A name without a slash is a file in the current folder. Without "./" the system would search PATH.
std::string programAt(const std::string& launchPath) {
    const bool isBareName = !launchPath.empty() && launchPath.find('/') == std::string::npos;
    return isBareName ? joinedPath(".", launchPath) : launchPath;
}

} // namespace

void NSTask::launch() {
    if (isLaunched_)
        throw NSException(NSInvalidArgumentException, "task already launched");
    std::vector<std::string> arguments;
    for (const NSString& argument : arguments_)
        arguments.push_back(argument.utf8());
    Result<ChildProcess> child = ChildProcess::start(programAt(launchPath_.utf8()), arguments);
    if (!child)
        throw NSException(NSInvalidArgumentException, "launch path not accessible: " + child.failure().text);
    child_ = *std::move(child);
    isLaunched_ = true;
}

void NSTask::waitUntilExit() {
    if (!isLaunched_)
        throw NSException(NSInvalidArgumentException, "task not launched");
    if (child_)
        (void)child_->wait();
    child_.reset();
}

} // namespace kestrine
