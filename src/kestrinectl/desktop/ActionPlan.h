// ActionPlan: what must change so that a file manager has the wanted actions.
#pragma once

#include "platform/host/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// The actions that file managers shall have: one for each set.
struct DesktopActions {
    std::vector<std::string> setNames; ///< no name twice; all can be shown in menus
    std::string program;               ///< the path of kestrinectl
    bool overwrites = false;           ///< whether actions that somebody edited are replaced as well

    /// The words that begin every command line, after the program.
    static std::string runArguments(const std::string& setName);
};

/// A file to write or, without content, to remove.
struct FileChange {
    std::string path;
    std::optional<std::string> content;
    bool isExecutable = false;
};

struct ActionPlan {
    std::size_t installed = 0;          ///< actions of ours that exist now, up to date or not
    std::size_t wanted = 0;             ///< actions that exist after the changes
    std::vector<FileChange> changes;    ///< none if all actions are up to date
    std::vector<std::string> obstacles; ///< sentences about what is in the way and stays
    std::vector<std::string> leftOut;   ///< sentences about sets without an action
    std::string emptyFolder;            ///< to be removed after the changes if it is empty; may be ""
};

/// The sentence about a set without an action.
std::string leftOutSentence(const std::string& setName, const std::string& reason);

/// Makes the changes, in order. Ends at the first failure.
Result<void> carryOut(const ActionPlan& plan);

/// A file of a target that has one file per action.
struct ActionFile {
    std::string name;    ///< in the folder of the target
    std::string content; ///< at least one line
};

/// The plan for a target with one file per action in `folder`. A second line in each file marks it as ours,
/// with a digest of the others. Other files, and files that were edited, are obstacles.
Result<ActionPlan> planOfFiles(const std::string& folder, const std::vector<ActionFile>& wanted,
                               bool isExecutable, bool overwrites);

/// The content of an action's file as it is written.
std::string markedContent(const std::string& content);

} // namespace kestrine
