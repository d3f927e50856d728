#include "kestrinectl/sets/SetDescription.h"

#include "kestrinectl/sets/SetNames.h"
#include "kestrinectl/text/PlainNumber.h"
#include "platform/imageio/OutputFormats.h"

namespace kestrine {

namespace {

std::string unitOf(const ResizeSet& set) { return set.convertResolution() != 0 ? " pixels" : " points"; }

std::string scalingOf(const ResizeSet& set) {
    switch (set.resizeType()) {
    case ResizeTypeSize:
        if (set.width() == 0)
            return "height " + plainNumber(set.height());
        if (set.height() == 0)
            return "width " + plainNumber(set.width());
        return plainNumber(set.width()) + " x " + plainNumber(set.height());
    case ResizeTypeRatio:
        return plainNumber(set.ratio()) + " %";
    case ResizeTypeMaxSize:
        return "longer side " + plainNumber(set.maxSize());
    default:
        return "not scaled";
    }
}

const OutputFormat* outputFormatOf(const ResizeSet& set) { return outputFormatNumbered(set.formatType()); }

std::string formatOf(const ResizeSet& set) {
    const OutputFormat* format = outputFormatOf(set);
    if (format == nullptr)
        return "no output";
    return std::string(format->title)
           + (format->hasQuality ? " " + plainNumber(set.compression()) + " %" : "");
}

bool scales(const ResizeSet& set) { return nameOfResizeType(set.resizeType()).has_value(); }

std::string turningSentence(const ResizeSet& set) {
    return set.autoRotate() != 0 ? "Turns a picture upright if its EXIF orientation asks for a quarter turn."
                                 : "Does not turn pictures.";
}

std::string formatSentence(const ResizeSet& set) {
    const OutputFormat* format = outputFormatOf(set);
    if (format == nullptr)
        return "Writes nothing, since the format " + std::to_string(set.formatType()) + " is unknown.";
    std::string sentence = "Writes " + std::string(format->title);
    if (format->hasQuality)
        sentence += " at quality " + plainNumber(set.compression()) + " %";
    if (!format->isSRGBOnly)
        sentence += ", with the colour profile";
    if (holdsExif(*format, ExifSelection::camera))
        sentence += set.attachExifData() != 0 ? " and the camera's EXIF data" : ", without EXIF data";
    return sentence + ".";
}

std::string placeSentence(const ResizeSet& set) {
    if (set.replaceFile() != 0)
        return "Puts the result in the place of the original and moves the original to the trash.";
    return "Puts the result into the folder \"" + set.name().value_or(u"").utf8() + "\" beside the original.";
}

void addSizeNotes(const ResizeSet& set, std::vector<std::string>& notes) {
    if (scales(set))
        notes.emplace_back(
            "a side may come out one pixel shorter, since presets compute in single precision and cut "
            "fractions off.");
    if (set.resizeType() == ResizeTypeMaxSize || set.resizeType() == ResizeTypeSize)
        notes.emplace_back("smaller pictures are enlarged.");
    if (set.resizeType() == ResizeTypeSize && set.width() == 0 && set.height() == 0)
        notes.emplace_back("width and height are both 0, so nothing is written.");
    if (set.resizeType() == ResizeTypeRatio && set.ratio() / 100.0F == 100.0F)
        notes.emplace_back("exactly 10000 % does not scale.");
    if (set.convertResolution() == 0 && scales(set))
        notes.emplace_back("sizes are in points: 3000 pixels at 300 dpi are 720 points.");
}

void addOtherNotes(const ResizeSet& set, std::vector<std::string>& notes) {
    if (set.autoRotate() != 0) {
        notes.emplace_back("only JPEG files named .jpg or .jpeg with big-endian EXIF data at the start are "
                           "turned; many cameras "
                           "write little-endian data.");
        notes.emplace_back("upside-down and mirrored pictures (orientations 2, 3, 4, 5, 7) are not turned.");
        notes.emplace_back("'kestrinectl convert --upright' turns every picture upright.");
    }
    const OutputFormat* format = outputFormatOf(set);
    if (set.attachExifData() != 0 && (format == nullptr || !holdsExif(*format, ExifSelection::camera)))
        notes.emplace_back("only JPEG output can carry EXIF data.");
    if (format != nullptr && !format->holdsAlpha)
        notes.emplace_back("transparent parts become white.");
    if (set.replaceFile() != 0) {
        notes.emplace_back("when several sets are applied at once, none replaces the original; the results "
                           "then go into folders "
                           "named after the sets.");
        notes.emplace_back("kestrine moves the original to the trash even when it cannot be converted; "
                           "'kestrinectl convert' "
                           "leaves it where it is.");
    }
    if (set.chooseFolder() != 0)
        notes.emplace_back("presets do not store the path of a chosen folder, so results go into the folder "
                           "named after the set.");
}

} // namespace

std::string summary(const ResizeSet& set) {
    std::string text = scalingOf(set) + ", " + formatOf(set);
    if (set.replaceFile() != 0)
        text += ", replaces";
    return text;
}

std::string scalingSentence(const ResizeSet& set) {
    const std::string how =
        set.highQuality() != 0 ? ", with the Lanczos filter" : ", with a plain linear filter";
    switch (set.resizeType()) {
    case ResizeTypeSize:
        if (set.width() != 0 && set.height() != 0)
            return "Scales to " + scalingOf(set) + unitOf(set) + how
                   + ", without regard to the proportions of the picture.";
        return "Scales to " + scalingOf(set) + unitOf(set) + how + "; the other side follows.";
    case ResizeTypeRatio:
        return "Scales both sides to " + scalingOf(set) + how + ".";
    case ResizeTypeMaxSize:
        return "Scales the longer side to " + plainNumber(set.maxSize()) + unitOf(set) + how + ".";
    default:
        return "Does not scale.";
    }
}

std::optional<std::string> noteOnLongerSide(const ResizeSet& set) {
    if (set.resizeType() != ResizeTypeMaxSize || set.highQuality() == 0)
        return std::nullopt;
    return "Note: the longer side of the result is "
           + plainNumber(set.maxSize() + static_cast<float>(set.highQuality()))
           + ", since high quality adds one.";
}

std::vector<std::string> description(const ResizeSet& set) {
    std::vector<std::string> sentences = {scalingSentence(set), turningSentence(set), formatSentence(set),
                                          placeSentence(set)};
    if (const auto note = noteOnLongerSide(set))
        sentences.push_back(*note);
    std::vector<std::string> notes;
    addSizeNotes(set, notes);
    addOtherNotes(set, notes);
    for (const std::string& note : notes)
        sentences.push_back("Note: " + note);
    return sentences;
}

} // namespace kestrine
