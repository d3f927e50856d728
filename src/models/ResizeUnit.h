// ResizeUnit: one job, a list of sets applied to one file.
#pragma once

#include "models/ResizeSet.h"
#include "platform/host/Result.h"

namespace kestrine {

/// The name of the notification that a finished job posts, and the key in its info dictionary under which the
/// output paths stand: one a set, in the order of the sets, whether or not anything was written.
inline constexpr const char16_t* RUResizeHasDone = u"RUResizeHasDone";
inline constexpr const char16_t* resultPathsKey = u"resultPaths";

/// Made, filled, run once or more, dropped; all on one thread.
class ResizeUnit final : public NSObject, public std::enable_shared_from_this<ResizeUnit> {
public:
    /// Key-value coding of the three fields. Raises NSUnknownKeyException for another key and
    /// NSInvalidArgumentException for a value that does not fit.
    /// `filepath`: the file's full path, or a dictionary with it under "path" and, under "rootPath", the
    /// folder that was handed in and in which the file was found; any other object stands for an empty path.
    /// `saveFolderPath`: the folder that holds the file, or nil. `resizeSets`: an NSArray of ResizeSet.
    void setValueForKey(const Object& value, const NSString& key);

    /// `resize:`: runs the whole job and posts RUResizeHasDone with the job as object. Failures are quiet:
    /// what cannot be made is not written. What a set's conversion raises goes to the caller; then nothing is
    /// posted.
    void resize(const Object& sender = nullptr);

    /// What became of one set.
    struct Outcome {
        NSString path; ///< of the output, written or not; "" when there was no folder for it
        bool isWritten = false;
        std::vector<Failure> failures; ///< what went wrong on the way, which is quiet otherwise
    };
    /// Of the last resize(), in the order of the sets.
    const std::vector<Outcome>& outcomes() const { return outcomes_; }

    /// `uniqueFileName:`: the path itself when its name is free, else the first free one of stem_1.ext,
    /// stem_2.ext, ... A dangling link takes its name.
    static NSString uniqueFileName(const NSString& path);

private:
    struct File {
        NSString path;
        OptionalString rootPath;
    };
    /// The picture as stored and with its resolution converted, each loaded when a set first needs it.
    struct ImageSlots {
        std::shared_ptr<NSImage> plain;
        std::shared_ptr<NSImage> converted;
    };

    File file() const;
    Outcome applySet(const ResizeSet& set, const File& file, ImageSlots& slots) const;
    std::shared_ptr<NSImage> imageForSet(const ResizeSet& set, const NSString& path, ImageSlots& slots) const;
    bool replacesFile(const ResizeSet& set) const {
        return resizeSets_.size() <= 1 && set.replaceFile() != 0;
    }

    Object filepath_;
    OptionalString saveFolderPath_;
    ResizeSets resizeSets_;
    std::vector<Outcome> outcomes_;
};

} // namespace kestrine
