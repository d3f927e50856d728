// JobPublication: gives the result of a job its name.
#pragma once

#include "models/MadeResult.h"
#include "models/ResizeJob.h"
#include "platform/host/files/AtomicFile.h"
#include "platform/host/files/FileMark.h"

namespace kestrine {

/// Publishes one result and updates the outcome, whose path must be the wanted one at the start. Each
/// function is called at most once.
class JobPublication {
public:
    /// `earlier`: those of the job's that no other result has replaced yet. All must outlive this object.
    JobPublication(const ResizeJob& job, std::vector<EarlierResult>& earlier, const MadeResult& made,
                   JobOutcome& outcome)
        : job_(job), earlier_(earlier), made_(made), outcome_(outcome), intended_(intention()) {}

    /// Writes to the first free name. Sets the outcome's path, even if nothing is written.
    void write();

    /// Moves the original to the trash first, so that the result can get its name. The result gets `rights`.
    /// If the policy demands a result, an original without this `mark` is not replaced.
    void replaceOriginal(const std::optional<FileRights>& rights, const std::optional<FileMark>& mark);

    /// Writes to the wanted path and no other.
    void writeAtFixedPath();

private:
    IntendedResult intention() const;
    bool isUnchanged(const std::optional<FileMark>& mark);
    bool stage(const std::optional<FileRights>& rights);
    Result<StagedFile> staged(const std::string& folder, const std::string& hiddenName,
                              const std::optional<FileRights>& rights);
    void moveOriginalToTrash();
    NSString nameBesideOriginal() const;
    std::optional<EarlierResult> takeEarlierResult();
    Result<void> record();
    Result<void> recordName(const std::string& path);
    void noteEnd() const;
    void write(Durability durability, const std::optional<FileRights>& rights);
    Result<std::string> publishUnderFreeName(Durability durability, const std::optional<FileRights>& rights);
    Result<std::string> publishInPlaceOf(const EarlierResult& earlier);
    Result<bool> publishAtFixedPath();
    bool isThere(const std::string& path) const;

    const ResizeJob& job_;
    std::vector<EarlierResult>& earlier_;
    const MadeResult& made_;
    JobOutcome& outcome_;
    IntendedResult intended_;
    std::optional<StagedFile> staged_; ///< the whole result, if it replaces the original
};

} // namespace kestrine
