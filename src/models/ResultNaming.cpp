#include "models/ResultNaming.h"

#include "platform/foundation/LocalTime.h"
#include "platform/imageio/TakenDate.h"

#include <algorithm>

namespace kestrine {

namespace {

/// When the picture was taken, as the camera wrote it; empty if the file does not say it, or says a date or
/// time that does not exist.
std::string takenDate(const PictureFile& file) {
    if (file.opened == nullptr)
        return "";
    const Result<Bytes> date = file.opened->answer(takenDateOf);
    const std::string text = date ? std::string(date->begin(), date->end()) : "";
    return dateFromText(NSString::fromUTF8(text)) ? text : "";
}

/// The day when the picture was taken, or else when the file was modified: YYYY-MM-DD in local time.
std::string day(const PictureFile& file) {
    std::string date = takenDate(file);
    if (date.empty())
        if (const Result<FileTime> modified = modificationTime(file.path->utf8()))
            date = isoText(std::chrono::floor<std::chrono::seconds>(*modified));
    date.resize(std::min<std::size_t>(date.size(), 10));
    std::ranges::replace(date, ':', '-');
    return date;
}

} // namespace

NSString nameOfResult(const ResizeJob& job, const ConversionRecipe& recipe, const PlannedResult& plan,
                      const PictureFile& file) {
    const ResultPlace& place = recipe.place;
    const NSString usual = resultName(job.path, plan.format, place.keepsExtension);
    if (!place.name)
        return usual;
    return NSString::fromUTF8(
        place.name->nameFor({.stem = job.path.lastPathComponent().deletingPathExtension().utf8(),
                             .extension = usual.pathExtension().utf8(),
                             .set = place.setName.value_or(u"").utf8(),
                             .width = plan.width,
                             .height = plan.height,
                             .number = job.number,
                             .count = job.count,
                             .date = place.name->uses(NameTemplate::Field::date) ? day(file) : ""}));
}

std::optional<FileTime> timeOfResult(TimesRule rule, const PictureFile& file) {
    if (rule == TimesRule::keep) {
        const Result<FileTime> modified = modificationTime(file.path->utf8());
        return modified ? std::optional(*modified) : std::nullopt;
    }
    if (rule == TimesRule::taken)
        return dateFromText(NSString::fromUTF8(takenDate(file)));
    return std::nullopt;
}

} // namespace kestrine
