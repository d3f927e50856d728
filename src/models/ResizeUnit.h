// ResizeUnit: one job, which applies a list of sets to one file. Its fields are set by key-value coding.
#pragma once

#include "models/ResizeJob.h"
#include "models/ResizeSet.h"

namespace kestrine {

/// The name of the notification that a finished job posts, and the key in its info dictionary that holds the
/// output paths: one per set, in the order of the sets, whether or not anything was written.
inline constexpr const char16_t* RUResizeHasDone = u"RUResizeHasDone";
inline constexpr const char16_t* resultPathsKey = u"resultPaths";

/// For use on one thread. A job may be run several times.
class ResizeUnit final : public NSObject, public std::enable_shared_from_this<ResizeUnit> {
public:
    /// Key-value coding of the three fields. Raises NSUnknownKeyException for another key and
    /// NSInvalidArgumentException for a value that does not fit.
    /// `filepath`: the file's full path, or a dictionary with it under "path" and, under "rootPath", the
    /// given folder in which the file was found; any other object counts as an empty path.
    /// `saveFolderPath`: the folder that holds the file, or nil. `resizeSets`: an NSArray of ResizeSet.
    void setValueForKey(const Object& value, const NSString& key);

    /// `resize:`: runs the whole job and posts RUResizeHasDone with the job as object. Failures are not
    /// reported: the file is then not written. Exceptions raised by a conversion reach the caller; then no
    /// notification is posted.
    void resize(const Object& sender = nullptr);

    /// `uniqueFileName:`: kestrine::uniqueFileName.
    static NSString uniqueFileName(const NSString& path);

private:
    ResizeJob job_; ///< its recipes come from the sets when it is run
    ResizeSets sets_;
};

} // namespace kestrine
