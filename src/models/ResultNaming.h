// How a result is named, and when it was modified.
#pragma once

#include "models/RecipeConversion.h"
#include "models/ResizeJob.h"
#include "platform/host/files/FileTimes.h"

namespace kestrine {

/// The name of the result, which may have folders. `file` is the file of the job, open already if a name
/// depends on the picture.
NSString nameOfResult(const ResizeJob& job, const ConversionRecipe& recipe, const PlannedResult& plan,
                      const PictureFile& file);

/// The modification time that the recipe asks for; nullopt for that of any new file. Call it while the
/// original is in its place.
std::optional<FileTime> timeOfResult(TimesRule rule, const PictureFile& file);

} // namespace kestrine
