// ActionPlan: what must change so that a file manager has the wanted actions.
#pragma once

#include "platform/host/Result.h"

#include <optional>
#include <string>
#include <vector>

namespace kestrine {

/// A file to write or, without content, to remove.
struct FileChange {
    std::string path;
    std::optional<std::string> content;
    bool isExecutable = false;
};

struct ActionPlan {
    std::size_t installed = 0;        ///< actions of ours that exist now, up to date or not
    std::size_t installedAfter = 0;   ///< actions of ours that exist after the changes
    std::vector<FileChange> changes;  ///< in the order in which they are made
    std::vector<std::string> edited;  ///< a sentence for each edited action; they stay
    std::vector<std::string> foreign; ///< sentences: which files of others prevent an action
    std::vector<std::string> leftOut; ///< sentences about sets without an action
    std::string emptyFolder;          ///< to be removed after the changes if it is empty; may be ""

    /// Whether all actions are as wanted after the changes.
    bool isComplete() const { return edited.empty() && foreign.empty(); }
};

/// The sentence about an edited action that stays; it `isWanted` if its set is still there.
std::string editedSentence(const std::string& action, bool isWanted);

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
/// with a digest of the others. Edited files stay unless the plan `overwrites`; those of others always stay.
Result<ActionPlan> planOfFiles(const std::string& folder, const std::vector<ActionFile>& wanted,
                               bool isExecutable, bool overwrites);

/// The content of an action's file as it is written.
std::string markedContent(const std::string& content);

} // namespace kestrine
