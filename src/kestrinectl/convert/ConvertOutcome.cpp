#include "kestrinectl/convert/ConvertOutcome.h"

#include "kestrinectl/convert/ConvertContents.h"
#include "kestrinectl/convert/ConvertKinds.h"
#include "kestrinectl/convert/ConvertPictureSigns.h"
#include "kestrinectl/text/ShownPath.h"

#include <algorithm>
#include <filesystem>

namespace kestrine {

namespace {

std::string complaintOf(const JobOutcome& outcome, const std::string& path) {
    if (outcome.isWritten)
        return "the original could not be moved to the trash (" + outcome.trashFailure->text
               + ") and remains in its place; the result is " + shownPath(outcome.path.utf8());
    std::string complaint = withoutPath(outcome.failure->text, path);
    if (outcome.refusal == Refusal::holdsMore)
        complaint = complaintOfMore(outcome.contents).text;
    if (outcome.refusal == Refusal::damaged)
        complaint = "the picture is damaged (" + complaint
                    + "), nothing was written; --accept-damaged converts it anyway";
    if (!outcome.trashedPath.empty())
        complaint +=
            "; the original is in the trash: restore it there, or move it back from " + outcome.trashedPath;
    return complaint;
}

/// Whether the format cannot hold EXIF data that the user asked for. `rights` and `all` are never defaults.
bool losesWantedExif(const ConversionRecipe& recipe, const OutputFormat& format) {
    const bool isWanted = recipe.exif == ExifSelection::rights || recipe.exif == ExifSelection::all;
    return isWanted && !holdsExif(format, *recipe.exif);
}

std::string_view kindOf(const JobOutcome& outcome) {
    if (outcome.isWritten)
        return "not in the trash";
    if (outcome.refusal == Refusal::holdsMore)
        return complaintOfMore(outcome.contents).kind;
    if (outcome.refusal == Refusal::changed)
        return "changed";
    return outcome.refusal == Refusal::damaged ? "damaged" : kindOf(outcome.failure->reason);
}

} // namespace

ConvertComplaint complaintOfMore(const FileContents& contents) {
    return {reasonNotToReplace(contents), "several pages or frames"};
}

std::optional<std::string> setOf(const ConversionRecipe& recipe) {
    const OptionalString& name = recipe.place.setName;
    return name ? std::optional(name->utf8()) : std::nullopt;
}

std::optional<std::string> misleadingName(const ConversionRecipe& recipe, const ConvertOutput& output) {
    const std::string extension = std::filesystem::path(output.path).extension().native();
    if (!recipe.place.name || output.format == nullptr || !hasNameOfPicture(output.path)
        || hasExtension(*output.format, extension.substr(1)))
        return std::nullopt;
    return "the name ends with " + extension + ", but the result is " + std::string(output.format->title)
           + "; {ext} in --name gives the right extension";
}

void addOutcome(ConvertResult& result, const ConvertInput& input, const ConversionRecipe& recipe,
                const JobOutcome& outcome) {
    result.isNotUpright = result.isNotUpright || (outcome.hasResult() && outcome.isNotUpright);
    if (outcome.isWritten) {
        result.outputs.push_back({outcome.path.utf8(), setOf(recipe), outcome.format, outcome.width,
                                  outcome.height, outcome.bytes, outcome.fitsAlready});
        if (const auto warning = misleadingName(recipe, result.outputs.back()))
            result.warn(*warning);
    } else if (outcome.fitsAlready && outcome.hasResult() && outcome.data == nullptr) {
        result.status = ConvertStatus::skipped;
        result.reason = reasonOfFitting;
    }
    const bool isMade = !outcome.fitsAlready; // a copy keeps everything
    if (outcome.isWritten && isMade && outcome.format != nullptr && losesWantedExif(recipe, *outcome.format))
        result.warn("the result has no EXIF data, since it is " + std::string(outcome.format->title)
                    + "; all other formats keep them");
    if (const auto omission = omissionIn(outcome.contents); omission && isMade && outcome.hasResult())
        result.warn(*omission);
    if (outcome.hasResult() && outcome.damage)
        result.warn("the picture is damaged (" + outcome.damage->text
                    + "); the result shows what could be read");
    if (!outcome.hasResult() || outcome.trashFailure)
        result.complain(complaintOf(outcome, input.path), kindOf(outcome));
}

} // namespace kestrine
