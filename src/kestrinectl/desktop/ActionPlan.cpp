#include "kestrinectl/desktop/ActionPlan.h"

#include "kestrinectl/text/Messages.h"
#include "platform/host/StringBytes.h"
#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/ContentDigest.h"
#include "platform/host/files/FileAttributes.h"
#include "platform/host/files/FileContent.h"
#include "platform/host/files/FileStatus.h"
#include "platform/host/files/Folders.h"
#include "platform/host/files/PathParts.h"

#include <algorithm>
#include <filesystem>
#include <map>

namespace kestrine {

namespace {

/// Larger files are not ours.
constexpr std::uint64_t maxActionFile = 64 * 1024;

const std::string markBegin =
    "# Made by 'kestrinectl desktop install', which updates this file unless it is edited: ";

std::size_t endOfFirstLine(const std::string& content) {
    return std::min(content.find('\n'), content.size() - 1) + 1;
}

/// An action's file that exists.
struct ExistingAction {
    std::string content;
    bool isEdited;
};

/// The content without the mark; nullopt if there is no mark.
std::optional<std::string> withoutMark(const std::string& content) {
    const std::size_t begin = content.empty() ? 0 : endOfFirstLine(content);
    const std::size_t end = content.find('\n', begin);
    if (content.compare(begin, markBegin.size(), markBegin) != 0 || end == std::string::npos)
        return std::nullopt;
    return content.substr(0, begin) + content.substr(end + 1);
}

/// nullopt for a file that is not ours, or cannot be read.
std::optional<ExistingAction> actionAt(const std::string& path) {
    const Result<Bytes> bytes = readSmallFile(path, maxActionFile);
    if (!bytes)
        return std::nullopt;
    const std::string content(bytes->begin(), bytes->end());
    const auto own = withoutMark(content);
    if (!own)
        return std::nullopt;
    return ExistingAction{content, markedContent(*own) != content};
}

/// Our files in a folder, by name; none if there is no folder.
Result<std::map<std::string, ExistingAction>> actionsIn(const std::string& folder) {
    std::map<std::string, ExistingAction> actions;
    if (isAbsent(folder))
        return actions;
    const FileDescriptor opened = TRY(openFolder(folder));
    for (const std::string& name : TRY(namesIn(opened.number())))
        if (auto action = actionAt(joinedPath(folder, name)))
            actions.emplace(name, *std::move(action));
    return actions;
}

bool ownerMayExecute(const std::string& path) {
    const Result<struct stat> status = attributesOf(path, FollowLinks::yes);
    return status && (status->st_mode & S_IXUSR) != 0;
}

} // namespace

std::string editedSentence(const std::string& action, bool isWanted) {
    return action + " was edited and is kept; --overwrite " + (isWanted ? "replaces it" : "removes it");
}

std::string leftOutSentence(const std::string& setName, const std::string& reason) {
    return "no action for the set " + quoted(setName) + ": " + reason;
}

std::string markedContent(const std::string& content) {
    const std::size_t begin = endOfFirstLine(content);
    return content.substr(0, begin) + markBegin + std::to_string(digestOf(content).number) + "\n"
           + content.substr(begin);
}

Result<ActionPlan> planOfFiles(const std::string& folder, const std::vector<ActionFile>& wanted,
                               bool isExecutable, bool overwrites) {
    std::map<std::string, ExistingAction> existing = TRY(actionsIn(folder));
    ActionPlan plan{.installed = existing.size()};
    for (const ActionFile& file : wanted) {
        const std::string path = joinedPath(folder, file.name), content = markedContent(file.content);
        const auto found = existing.extract(file.name);
        if (found.empty() && isTaken(path)) {
            plan.foreign.push_back(path + " is not an action of kestrinectl; move it away");
            continue;
        }
        ++plan.installedAfter;
        const bool isCurrent =
            !found.empty() && found.mapped().content == content && (!isExecutable || ownerMayExecute(path));
        if (!found.empty() && found.mapped().isEdited && !overwrites)
            plan.edited.push_back(editedSentence(path, true));
        else if (!isCurrent)
            plan.changes.push_back({path, content, isExecutable});
    }
    for (const auto& [name, action] : existing) {
        const std::string path = joinedPath(folder, name);
        if (!action.isEdited || overwrites) {
            plan.changes.push_back({path, std::nullopt});
            continue;
        }
        ++plan.installedAfter;
        plan.edited.push_back(editedSentence(path, false));
    }
    return plan;
}

Result<void> carryOut(const ActionPlan& plan) {
    for (const FileChange& change : plan.changes) {
        if (!change.content) {
            TRY(removeFile(change.path));
            continue;
        }
        TRY(replaceFile(change.path, bytesOf(*change.content)));
        if (change.isExecutable)
            TRY(makeExecutable(change.path));
    }
    std::error_code ignored;
    if (!plan.emptyFolder.empty())
        std::filesystem::remove(plan.emptyFolder, ignored); // only if it is empty
    return {};
}

} // namespace kestrine
