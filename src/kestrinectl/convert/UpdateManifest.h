// UpdateManifest: which results earlier runs have made of which sources, so that `convert --update` makes
// only what is missing or out of date. A file of JSON lines; after a crash it still names every result of a
// run.
#pragma once

#include "kestrinectl/LockedLog.h"
#include "models/ResizeJob.h"
#include "platform/host/files/FileMark.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace kestrine {

/// Any thread may call its functions while no other object uses the same file.
class UpdateManifest final : public ChangeRecorder {
public:
    /// What happens when the folder of the manifest is moved or copied.
    enum class Paths : bool {
        absolute, ///< sources and results are found only at their old absolute paths
        relative, ///< those below its folder are also found if they were moved with it
    };

    /// Opens or creates the manifest at `path`. Throws CommandError if it cannot be written, is in use, is of
    /// a newer version, or is another kind of file.
    UpdateManifest(const std::string& path, WhenBusy whenBusy, Paths paths);

    /// Only reads the manifest, also while another process uses it; record() and finished() must not be
    /// called. Throws CommandError if it cannot be read, is of a newer version, or is another kind of file.
    UpdateManifest(const std::string& path, Paths paths);

    /// Where the manifest for the results in `outFolder` is; "" stands for results beside their originals.
    static std::string pathFor(const std::string& outFolder);

    enum class Status : std::uint8_t {
        missing, ///< there are no results, or they are out of date
        current,
        edited, ///< as `current`, but a result was changed since
    };
    /// Reads files of which only the time has changed, and notes their times if their content has not.
    Status statusOf(const ResizeJob& job);

    /// Whether an earlier job, or one of this run, made the file of another one.
    bool isResult(const std::string& path) const;

    /// What is known of the results that a job is about to make again.
    struct Earlier {
        std::vector<EarlierResult> replaceable;
        std::vector<std::string> edited; ///< the paths of those that were changed since
        FileMark source;                 ///< of the source before it is converted
    };
    Earlier earlierResults(const ResizeJob& job) const;

    std::optional<EarlierResult> takeAbandonedResult(const std::string& path) override;

    /// Notes results that are about to be published.
    Result<void> record(const IntendedResult& result) override;

    /// Notes that all results of a job are there. `source` is the mark of its source before the conversion.
    Result<void> finished(const ResizeJob& job, const FileMark& source,
                          const std::vector<JobOutcome>& outcomes);

private:
    struct MadeFile {
        std::string wanted, path;
        FileMark mark; ///< only length and time
        ContentDigest content;
    };
    struct Made {
        FileMark source;                      ///< only length and time
        std::optional<std::uint64_t> content; ///< ContentDigest::number of the source, if it is known
        std::string options;
        std::vector<MadeFile> files;
    };
    struct Source {
        std::vector<Made> made;         ///< by options
        std::vector<MadeFile> intended; ///< begun, perhaps by a run that was killed; without a mark
    };

    static std::string baseFor(const std::string& path, Paths paths);
    void read(const std::string& path, const std::vector<std::string>& lines);
    void read(const std::string& line);
    void add(const std::string& source, Made made);
    bool isOurs(const Source& source, const std::string& path, const FileMark& mark) const;
    std::string optionsOf(const ResizeJob& job) const;
    const std::string& folderWithoutLinks(const std::string& folder) const;
    std::string keyOf(const std::string& path) const;
    std::string stored(const std::string& path) const;
    std::string restored(const std::string& path) const;
    void addResult(const std::string& source, const std::string& path);
    void replaceResult(const std::string& source, const std::string& path);
    static bool isUnchanged(const std::string& path, const FileMark& mark, const FileMark& before,
                            const std::optional<std::uint64_t>& content);
    void noteTimes(const std::string& source, Made& made, Made newest);
    void shorten(std::size_t lineCount);
    std::string intentionLine(const std::string& source, const MadeFile& file) const;
    std::string lineOf(const std::string& source, const Made& made) const;

    mutable std::mutex mutex_;   // guards all members
    std::optional<LineLog> log_; ///< absent if it is only read
    int version_ = 0;
    const std::string base_; ///< the folder below which paths are stored relative to it; "" for none
    std::map<std::string, Source> sources_; ///< by path, without links in the folder part
    /// By the path of a result, likewise: its source, a key of sources_.
    std::unordered_map<std::string, const std::string*> results_;
    mutable ConversionRecipes recipes_; ///< for which recipesText_ was made
    mutable std::string recipesText_;
    mutable std::map<std::string, std::string> folders_; ///< without links, by path
};

} // namespace kestrine
