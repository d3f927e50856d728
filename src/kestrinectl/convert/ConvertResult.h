// ConvertResult: the outcome for one file or folder of a conversion, as plain data for lines and JSON.
#pragma once

#include "platform/imageio/OutputFormats.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrine {

enum class ConvertStatus : std::uint8_t {
    done,
    skipped, ///< nothing had to be made
    failed,
    leftOut, ///< not to be converted, although it was found
    would,   ///< a dry run
};

/// What a later run compares to recognise a result.
struct MadeContent {
    std::uint64_t digest = 0;  ///< ContentDigest::number
    std::int64_t modified = 0; ///< nanoseconds since 1970
};

/// One file that was made, or that would be.
struct ConvertOutput {
    std::string path;                     ///< absolute; in the runs of a plan, below its root
    std::optional<std::string> set;       ///< the name of the preset
    const OutputFormat* format = nullptr; ///< null if that is not known yet
    std::uint32_t width = 0, height = 0;  ///< in pixels; 0 if that is not known yet
    std::uint64_t bytes = 0;
    bool isCopy = false;                ///< of the source, which was already as the result should be
    std::optional<MadeContent> content; ///< where later runs need it
};

/// Why something failed.
struct ConvertComplaint {
    std::string text;      ///< a sentence without the source
    std::string_view kind; ///< "damaged", for totals
};

struct ConvertResult {
    std::string source; ///< as shown
    ConvertStatus status = ConvertStatus::done;
    std::vector<ConvertOutput> outputs;       ///< of a skipped file: results that were there already
    std::string reason;                       ///< why it was skipped or left out
    std::string sentence;                     ///< for people: what was left out, and why; "" for nothing
    std::vector<std::string> warnings;        ///< sentences without the source; no failure
    std::vector<ConvertComplaint> complaints; ///< none when everything succeeded
    std::uint64_t sourceBytes = 0;
    std::chrono::milliseconds duration{0};
    bool isUpToDate = false;   ///< skipped because an earlier run made its results
    bool isFolder = false;     ///< whether the source is a folder that is not counted as a file
    bool isNotUpright = false; ///< whether a result is not upright although the file says how to turn it

    /// Adds a complaint unless the same one is there; the result has failed.
    void complain(const std::string& text, std::string_view kind);

    /// Adds a warning unless the same one is there.
    void warn(const std::string& text);
};

} // namespace kestrine
