// ResizeUnit: one job, a list of sets applied to one file, filled through key-value coding.
#pragma once

#include "models/ResizeJob.h"

namespace kestrine {

/// The name of the notification that a finished job posts, and the key in its info dictionary that holds the
/// output paths: one per set, in the order of the sets, whether or not anything was written.
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

    /// `uniqueFileName:`: kestrine::uniqueFileName.
    static NSString uniqueFileName(const NSString& path);

private:
    ResizeJob job_;
};

} // namespace kestrine
