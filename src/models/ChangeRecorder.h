// ChangeRecorder: learns what jobs are about to do to files, so that it can be undone or continued later.
#pragma once

#include "platform/host/files/ContentDigest.h"

#include <optional>
#include <string>

namespace kestrine {

/// A result that is about to be published.
struct IntendedResult {
    std::string source;          ///< the path of the file that is converted
    bool replacesSource = false; ///< whether the source is about to go to the trash
    std::string wanted;          ///< the path that the result gets if its name is free
    std::string path;            ///< the path that it is about to get
    std::string hiddenPath;      ///< of the hidden file that holds the content until then; "" for none
    ContentDigest content;
    bool isCorrection = false; ///< whether another path was recorded for this result before
};

/// A result of an earlier run that the result of a job may replace.
struct EarlierResult {
    std::string wanted; ///< see IntendedResult
    std::string path;
    ContentDigest content; ///< it is replaced only if it still has this content
};

class ChangeRecorder {
public:
    virtual ~ChangeRecorder() = default;

    /// The unchanged result of an earlier run at this path whose source is gone, so that another source may
    /// replace it; each only once. Any thread.
    virtual std::optional<EarlierResult> takeAbandonedResult(const std::string& /*path*/) { return {}; }

    /// Called before anything of this changes a file. The result is not made if it fails. If the name is lost
    /// to another program, there is one more call with the next name. Any thread.
    virtual Result<void> record(const IntendedResult& result) = 0;

    /// Called after a recorded result that replaces its source. `isReplaced`: whether the source is in the
    /// trash; else it is where it was. Any thread.
    virtual void ended(const IntendedResult& /*result*/, bool /*isReplaced*/) {}
};

} // namespace kestrine
