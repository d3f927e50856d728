#include "kestrinectl/SetDescription.h"

#include "kestrinectl/SetNames.h"

#include <algorithm>
#include <cctype>
#include <charconv>

namespace kestrine {

namespace {

std::string upperCased(std::string text) {
    std::ranges::transform(text, text.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

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

std::string formatOf(const ResizeSet& set) {
    const std::optional<std::string> name = nameOfFormat(set.formatType());
    if (!name)
        return "no output";
    const bool isJPEG = set.formatType() == FormatTypeJPEG;
    return upperCased(*name) + (isJPEG ? " " + plainNumber(set.compression()) + " %" : "");
}

bool scales(const ResizeSet& set) { return nameOfResizeType(set.resizeType()).has_value(); }

std::string scalingSentence(const ResizeSet& set) {
    const std::string how =
        set.highQuality() != 0 ? ", with the Lanczos filter" : ", with plain interpolation";
    switch (set.resizeType()) {
    case ResizeTypeSize:
        if (set.width() != 0 && set.height() != 0)
            return "Scales to " + scalingOf(set) + unitOf(set) + how
                   + ", whatever the picture's proportions.";
        return "Scales to " + scalingOf(set) + unitOf(set) + how + "; the other side follows.";
    case ResizeTypeRatio:
        return "Scales both sides to " + scalingOf(set) + how + ".";
    case ResizeTypeMaxSize:
        return "Scales the longer side to " + plainNumber(set.maxSize()) + unitOf(set) + how + ".";
    default:
        return "Does not scale.";
    }
}

std::string turningSentence(const ResizeSet& set) {
    return set.autoRotate() != 0 ? "Turns pictures upright whose EXIF orientation asks for a quarter turn."
                                 : "Turns nothing.";
}

std::string formatSentence(const ResizeSet& set) {
    switch (set.formatType()) {
    case FormatTypeJPEG:
        return "Writes JPEG at quality " + plainNumber(set.compression()) + " %, with the colour profile"
               + (set.attachExifData() != 0 ? " and the camera's EXIF data." : " and without EXIF data.");
    case FormatTypePNG:
    case FormatTypeTIFF:
    case FormatTypeGIF:
        return "Writes " + formatOf(set)
               + (set.formatType() == FormatTypeGIF ? "." : ", with the colour profile.");
    default:
        return "Writes nothing: its format is unknown (" + std::to_string(set.formatType()) + ").";
    }
}

std::string placeSentence(const ResizeSet& set) {
    if (set.replaceFile() != 0)
        return "Puts the result in the original's place and the original into the trash.";
    return "Puts the result into a folder \"" + set.name().value_or(u"").utf8() + "\" beside the original.";
}

void addSizeNotes(const ResizeSet& set, std::vector<std::string>& notes) {
    if (set.resizeType() == ResizeTypeMaxSize && set.highQuality() != 0)
        notes.push_back("the longer side comes out at "
                        + plainNumber(set.maxSize() + static_cast<float>(set.highQuality()))
                        + ": high quality asks for one more.");
    if (set.resizeType() == ResizeTypeMaxSize || set.resizeType() == ResizeTypeSize)
        notes.emplace_back("smaller pictures are enlarged.");
    if (set.resizeType() == ResizeTypeSize && set.width() == 0 && set.height() == 0)
        notes.emplace_back("width and height are both 0, so no picture comes out.");
    if (set.resizeType() == ResizeTypeRatio && set.ratio() / 100.0F == 100.0F)
        notes.emplace_back("exactly 10000 % means: not scaled at all.");
    if (set.convertResolution() == 0 && scales(set))
        notes.emplace_back("sizes are points: a 300 dpi scan of 3000 pixels counts as 720 points.");
}

void addOtherNotes(const ResizeSet& set, std::vector<std::string>& notes) {
    if (set.autoRotate() != 0) {
        notes.emplace_back(
            "only JPEG files named .jpg or .jpeg with big-endian EXIF at the start are turned; cameras that "
            "write little-endian EXIF are not.");
        notes.emplace_back(
            "upside-down and mirrored pictures (orientations 2, 3, 4, 5, 7) stay as they are.");
    }
    if (set.attachExifData() != 0 && set.formatType() != FormatTypeJPEG)
        notes.emplace_back("EXIF data goes into JPEG files only.");
    if (set.formatType() == FormatTypeJPEG)
        notes.emplace_back("transparent parts become white.");
    if (set.replaceFile() != 0) {
        notes.emplace_back(
            "together with other sets it does not replace; the result then goes into a folder named after "
            "the set.");
        notes.emplace_back("an original that cannot be converted goes into the trash all the same.");
    }
    if (set.chooseFolder() != 0)
        notes.emplace_back(
            "the folder chosen in the desktop application is not stored, so it has no effect here.");
}

} // namespace

std::string plainNumber(float value) {
    char text[64];
    const auto end = std::to_chars(text, text + sizeof text, value).ptr;
    return {text, end};
}

std::string summary(const ResizeSet& set) {
    std::string text = scalingOf(set) + ", " + formatOf(set);
    if (set.replaceFile() != 0)
        text += ", replaces";
    return text;
}

std::vector<std::string> description(const ResizeSet& set) {
    std::vector<std::string> sentences = {scalingSentence(set), turningSentence(set), formatSentence(set),
                                          placeSentence(set)};
    std::vector<std::string> notes;
    addSizeNotes(set, notes);
    addOtherNotes(set, notes);
    for (const std::string& note : notes)
        sentences.push_back("Note: " + note);
    return sentences;
}

} // namespace kestrine
