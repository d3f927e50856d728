// The conversion of one picture by a recipe. Nothing here changes files.
#pragma once

#include "_MyClasses/Category/PictureFile.h"
#include "models/ConversionRecipe.h"
#include "platform/appkit/NSImage.h"

namespace kestrine {

/// The format that the rule names; null if it names none.
const OutputFormat* namedFormat(const FormatRule& rule);

/// What a recipe makes of one picture, known before anything is decoded.
struct PlannedResult {
    std::shared_ptr<NSImage> image;       ///< turned and sized; nil when that is not possible
    const OutputFormat* format = nullptr; ///< null if nothing is written
    std::uint32_t width = 0, height = 0;  ///< in pixels
    bool isNotUpright = false; ///< whether it is not upright although the file says how it should be turned
    bool fitsAlready =
        false; ///< whether the file itself is as the result should be; the size is then its own
};

/// `image` is the loaded picture of `file`, its resolution already converted if the recipe requires it; null
/// to load it here.
PlannedResult plannedResult(const ConversionRecipe& recipe, const PictureFile& file,
                            std::shared_ptr<NSImage> image);

/// Whether there can be a result. If not, the reason is noted unless the plan itself tells it.
bool mayBeEncoded(const PlannedResult& plan, const ConversionRecipe& recipe);

/// The bytes of the result; nil when there is none, or when it cannot be decoded or encoded.
std::shared_ptr<const NSData> encodedResult(const PlannedResult& plan, const ConversionRecipe& recipe,
                                            const PictureFile& file);

/// The same into `result`, a descriptor of an empty file that is open for writing. False where the other
/// gives nil; the content of the file is then of no use.
bool writeResult(int result, const PlannedResult& plan, const ConversionRecipe& recipe,
                 const PictureFile& file);

/// The name of a result without a template: the source's stem with the extension of the format, in upper case
/// when the source's is. Without a format, or with `keepsExtension` if the source has an extension of the
/// format, that extension stays. For presets, an extension without letters counts as upper case.
NSString resultName(const NSString& path, const OutputFormat* format, bool keepsExtension = false);

} // namespace kestrine
