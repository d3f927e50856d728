#include "kestrinectl/inspect/Explanation.h"

#include "_MyClasses/Category/ImageUtility.h"
#include "_MyClasses/Class/ExifTag/ExifOrientation.h"
#include "kestrinectl/CommandError.h"
#include "kestrinectl/GivenPaths.h"
#include "kestrinectl/convert/ConvertContents.h"
#include "kestrinectl/sets/SetDescription.h"
#include "kestrinectl/text/JSONText.h"
#include "kestrinectl/text/ShownPath.h"
#include "models/RecipeConversion.h"
#include "models/ResizeJob.h"
#include "models/ResultNaming.h"
#include "platform/host/FailureCollector.h"
#include "platform/imageio/FileContents.h"

#include <array>

namespace kestrine {

namespace {

using nlohmann::ordered_json;

/// The words for the EXIF orientations, indexed by their number.
constexpr std::array<const char*, 9> orientationWords = {
    "not stated",
    "upright",
    "mirrored",
    "upside down",
    "upside down and mirrored",
    "to be mirrored, then turned 90 degrees counterclockwise",
    "to be turned 90 degrees clockwise",
    "to be mirrored, then turned 90 degrees clockwise",
    "to be turned 90 degrees counterclockwise"};

std::string sizeText(std::uint32_t width, std::uint32_t height) {
    return std::to_string(width) + " x " + std::to_string(height);
}

std::string colorOf(const RowFormat& format) {
    return std::string(format.model == ColorModel::gray ? "grey" : "RGB")
           + (format.hasAlpha ? " with transparency" : "");
}

/// Presets turn quarter turns only, and only by data that ExifTagReader accepts.
std::string turningStep(const ResizeSet& set, const Explanation& picture) {
    const int seen = picture.narrowOrientation;
    if (set.autoRotate() == 0)
        return picture.orientation == 1 ? "Does not turn pictures; this one is upright."
                                        : "Does not turn it, because the set does not turn pictures.";
    if (seen == 6 || seen == 8)
        return std::string("Turns it a quarter ") + (seen == 6 ? "clockwise." : "counterclockwise.");
    if (picture.orientation == 1)
        return "Does not turn it, because it is upright.";
    if (picture.orientation == 6 || picture.orientation == 8)
        return "Does not turn it, because presets read the orientation only from big-endian EXIF data at the "
               "start of "
               "files named .jpg or .jpeg; 'kestrinectl convert --upright' turns it.";
    return "Does not turn it, because presets only turn by a quarter; 'kestrinectl convert --upright' turns "
           "it.";
}

std::string placeStep(const ResizeSet& set, const ExplainedSet& result) {
    if (result.path.empty())
        return "Writes nothing.";
    if (set.replaceFile() != 0)
        return "Moves the original to the trash and puts the result in its place: " + shownPath(result.path)
               + ".";
    return "Writes " + shownPath(result.path) + ".";
}

/// `obstacle` is the reason for a missing picture, if known.
std::string resultStep(const ExplainedSet& result, const std::optional<Failure>& obstacle) {
    if (result.format == nullptr)
        return "Gives no result, because its format does not exist.";
    if (result.width == 0)
        return "Gives no result, because "
               + (obstacle ? obstacle->text : "a side of it would be shorter than one pixel") + ".";
    return "The result is " + sizeText(result.width, result.height) + " pixels, "
           + std::string(result.format->title) + ".";
}

class Explainer {
public:
    explicit Explainer(const std::string& file) {
        explanation_.file = file;
        const std::string path = absolutePath(file).native();
        const NSString name = NSString::fromUTF8(path);
        Result<std::shared_ptr<Source>> source = openPicture(path, orientationQuestionFor(name));
        if (!source)
            throw CommandError(shownPath(file) + ": " + withoutPath(source.failure().text, path));
        file_ = PictureFile(name, *std::move(source));
        describe();
    }

    void add(const ResizeSet& set) {
        const ConversionRecipe recipe = set.recipe();
        const std::shared_ptr<NSImage> image = NSImage::initWithSource(file_.opened);
        if (image != nullptr && recipe.convertsResolution)
            myUtility::convertResolution(*image);
        const FailureCollector collector;
        const PlannedResult plan = plannedResult(recipe, file_, image);
        const std::optional<Failure> obstacle =
            collector.failures().empty() ? std::nullopt : std::optional(collector.failures().back());
        ExplainedSet result{
            .set = set.name().value_or(u"").utf8(), .steps = {}, .path = "", .format = plan.format};
        if (plan.image != nullptr && plan.format != nullptr && plan.width > 0) {
            result.width = plan.width;
            result.height = plan.height;
            result.path = pathOf(recipe, plan);
        }
        result.steps = {turningStep(set, explanation_), scalingSentence(set)};
        if (const auto note = noteOnLongerSide(set))
            result.steps.push_back(*note);
        result.steps.push_back(resultStep(result, obstacle));
        result.steps.push_back(placeStep(set, result));
        explanation_.sets.push_back(std::move(result));
    }

    Explanation explanation() && { return std::move(explanation_); }

private:
    void describe() {
        const std::shared_ptr<NSImage> image = NSImage::initWithSource(file_.opened);
        if (image == nullptr || image->representations().empty())
            throw CommandError(shownPath(explanation_.file) + ": the picture cannot be read");
        const Picture& picture = image->representations().front()->picture();
        explanation_.format = file_.opened->codec()->name;
        explanation_.width = picture.format().width;
        explanation_.height = picture.format().height;
        explanation_.bitsPerSample = static_cast<unsigned>(8 * picture.format().bytesPerSample());
        explanation_.color = colorOf(picture.format());
        explanation_.orientation = picture.description().orientation;
        explanation_.narrowOrientation = exifOrientation(file_);
        const Result<Bytes> profile = file_.opened->property(picture, PictureProperty::profile);
        explanation_.hasProfile = profile && !profile->empty();
        if (const Result<Bytes> name = file_.opened->property(picture, PictureProperty::profileName))
            explanation_.profile.assign(name->begin(), name->end());
        if (const Result<FileContents> contents = contentsOf(file_.opened))
            explanation_.holdsMore = omissionIn(*contents).value_or("");
    }

    /// The path that the result gets if this is the only file of the run; "" if there is no folder for it.
    std::string pathOf(const ConversionRecipe& recipe, const PlannedResult& plan) const {
        const NSString& path = *file_.path;
        const OptionalString folder =
            recipe.place.replaces ? path.deletingLastPathComponent()
                                  : folderFor(recipe.place, path.deletingLastPathComponent(), std::nullopt);
        if (!folder)
            return "";
        const ResizeJob job{.path = path};
        const NSString wanted = folder->appendingPathComponent(nameOfResult(job, recipe, plan, file_));
        return recipe.place.replaces && wanted == path ? wanted.utf8() : uniqueFileName(wanted).utf8();
    }

    PictureFile file_;
    Explanation explanation_;
};

} // namespace

Explanation explain(const std::string& file, const ResizeSets& sets) {
    Explainer explainer(file);
    for (const auto& set : sets)
        explainer.add(*set);
    return std::move(explainer).explanation();
}

std::vector<std::string> linesOf(const Explanation& picture) {
    const std::string profile = !picture.hasProfile       ? "no colour profile, which counts as sRGB"
                                : picture.profile.empty() ? "a colour profile without a name"
                                                          : "the colour profile " + picture.profile;
    const auto orientation = static_cast<std::size_t>(picture.orientation);
    std::vector<std::string> lines = {
        shownPath(picture.file),
        "  " + picture.format + ", " + sizeText(picture.width, picture.height) + " pixels, " + picture.color
            + ", " + std::to_string(picture.bitsPerSample) + " bits per sample, " + profile + ".",
        "  Orientation " + std::to_string(picture.orientation) + ": " + orientationWords[orientation] + "."};
    if (!picture.holdsMore.empty())
        lines.push_back("  Note: " + picture.holdsMore + ".");
    for (const ExplainedSet& set : picture.sets) {
        lines.push_back("  Set " + set.set + ":");
        for (const std::string& step : set.steps)
            lines.push_back("    " + step);
    }
    return lines;
}

ordered_json toJSON(const Explanation& picture) {
    ordered_json sets = ordered_json::array();
    for (const ExplainedSet& set : picture.sets) {
        ordered_json steps = ordered_json::array();
        for (const std::string& step : set.steps)
            steps.push_back(textToJSON(step));
        const bool hasResult = set.width > 0;
        sets.push_back({{"set", textToJSON(set.set)},
                        {"steps", std::move(steps)},
                        {"path", hasResult ? textToJSON(set.path) : ordered_json()},
                        {"format", hasResult ? ordered_json(set.format->name) : ordered_json()},
                        {"width", hasResult ? ordered_json(set.width) : ordered_json()},
                        {"height", hasResult ? ordered_json(set.height) : ordered_json()}});
    }
    return {{"file", textToJSON(picture.file)},
            {"format", picture.format},
            {"width", picture.width},
            {"height", picture.height},
            {"color", picture.color},
            {"bitsPerSample", picture.bitsPerSample},
            {"profile", picture.hasProfile ? textToJSON(picture.profile) : ordered_json()},
            {"orientation", picture.orientation},
            {"orientationForPresets", picture.narrowOrientation},
            {"sets", std::move(sets)}};
}

} // namespace kestrine
