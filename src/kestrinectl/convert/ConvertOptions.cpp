#include "kestrinectl/convert/ConvertOptions.h"

#include "kestrinectl/sets/SetNames.h"
#include "kestrinectl/text/NonEmpty.h"
#include "kestrinectl/text/NumberBetween.h"
#include "models/NameTemplate.h"
#include "models/RecipeWords.h"

namespace kestrine {

namespace {

/// Accepts the words that `read` understands.
template <class Read>
CLI::Validator understoodBy(const Read& read) {
    return CLI::Validator(
        [read](const std::string& word) -> std::string {
            const auto value = read(word);
            return value ? "" : value.failure().text;
        },
        "");
}

/// Adds options with a value.
struct ValueOptions {
    CLI::App& command;

    void add(const char* name, std::optional<std::string>& value, const CLI::Validator& check,
             const char* valueName, const std::string& help) const {
        command.add_option(name, value, help)->check(check)->option_text(valueName);
    }
};

/// An option and its opposite; the last one counts.
void addSwitchOption(CLI::App& command, const char* names, std::optional<bool>& value, const char* help) {
    command
        .add_flag(
            names, [&value](std::int64_t count) { value = count > 0; }, help)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

void addSizes(CLI::App& command, ConvertOptions& to) {
    const ValueOptions values{command};
    values.add("--longest", to.longest, understoodBy(lengthsIn), "N[,N...]",
               "Scale the longer side to exactly N pixels; several numbers make several results per file");
    values.add("--width", to.width, understoodBy(lengthsIn), "N[,N...]",
               "Scale to this width in pixels; without --height, the height follows");
    values.add("--height", to.height, understoodBy(lengthsIn), "N[,N...]",
               "Scale to this height in pixels; without --width, the width follows");
    values.add("--percent", to.percent, understoodBy(percentagesIn), "N[,N...]",
               "Scale both sides to this percentage");
    values.add("--fit", to.fit, understoodBy(boxIn), "WxH",
               "Scale to the largest size that fits into this box");
    values.add("--cover", to.cover, understoodBy(boxIn), "WxH",
               "Scale to exactly this size and crop the rest");
    values.add("--gravity", to.gravity, understoodBy(gravityNamed), "PLACE",
               "The part that --cover keeps, and the place of the picture in the box of --pad: "
                   + gravityNames() + " (default: center)");
    values.add("--pad", to.pad, understoodBy(colorIn), "COLOR",
               "Fill the box of --fit with this colour, such as white or #ffcc00 (default: no margins)");
    command.add_flag("--no-enlarge", to.keepsSmall,
                     "Do not make pictures larger (default: they are enlarged)");
}

void addFormat(CLI::App& command, ConvertOptions& to) {
    const ValueOptions values{command};
    values.add("--format", to.format, formatOfResult(""), "FORMAT",
               "Output format: " + formatNames(outputFormats())
                   + " (default without a set: that of the file, or else jpeg, and png with transparency)");
    command
        .add_option("--quality", to.quality,
                    "Quality in percent, 0 to 100, for formats that have one (default without a set: 80)")
        ->check(numberBetween(0.0F, 100.0F))
        ->option_text("N");
}

void addEncoding(CLI::App& command, ConvertOptions& to) {
    const ValueOptions values{command};
    values.add(
        "--max-bytes", to.maxBytes, understoodBy(bytesIn), "SIZE",
        "Use the highest quality with which a result has at most this size, such as 200k; an error if there "
        "is none");
    command.add_flag(
        "--lossless", to.isLossless,
        "Store exact pixels in formats that can be lossy or not: webp, avif and jxl (default: lossy)");
    values.add("--effort", to.effort, understoodBy(effortNamed), "fast|normal|max",
               "Time to spend on smaller files, for png, webp, avif and jxl (default: normal)");
    command.add_flag(
        "--progressive", to.isProgressive,
        "Store JPEG so that the whole picture is shown early; a little smaller (default: baseline)");
}

void addSkipFitting(CLI::App& command, ConvertOptions& to) {
    command.add_flag(
        "--skip-fitting", to.skipsFitting,
        "Copy a file unchanged that has the format already, is not larger, stands upright and has no "
        "more metadata than asked for (default: every file is converted)");
}

void addColours(CLI::App& command, ConvertOptions& to) {
    const ValueOptions values{command};
    addSwitchOption(command, "--upright,!--no-upright", to.upright,
                    "Turn all pictures upright, or none (default without a set: --upright)");
    values.add("--background", to.background, understoodBy(colorIn), "COLOR",
               "Colour for transparent parts (default: transparent, or white where the format has no "
               "transparency)");
    values.add("--profile", to.profile, understoodBy(profileNamed), "keep|srgb",
               "Keep the colour profile, or convert to sRGB (default: keep)");
}

void addMetadata(CLI::App& command, ConvertOptions& to) {
    const ValueOptions values{command};
    values.add(
        "--metadata", to.metadata, understoodBy(metadataNamed), "none|rights|exif|all",
        "What to keep of the EXIF data: nothing; artist and copyright; what describes the picture; or "
        "also serial numbers, the owner's name, keywords, ratings and the GPS position, in all formats but "
        "GIF (default without a set: exif without serial numbers and the owner's name)");
    command.add_flag("--exif", to.exif, "Short for --metadata exif");
    values.add("--times", to.times, understoodBy(timesNamed), "keep|taken|now",
               "Modification time of the results: that of the original, when the picture was taken, or now "
               "(default: now)");
}

void addPlaces(CLI::App& command, ConvertOptions& to) {
    const ValueOptions values{command};
    values.add("--out", to.out, nonEmpty(), "FOLDER",
               "Folder for the results, with the sub-folders in which the files were found");
    values.add(
        "--name", to.name, understoodBy(NameTemplate::parse), "TEMPLATE",
        "Names of the results below --out, with {stem}, {ext}, {set}, {width}, {height}, {n} and {date} "
        "(default: {stem}.{ext}, or {stem}-{width}.{ext} for several sizes)");
    command.add_flag("--replace", to.replaces,
                     "Put each result in the place of its original, which goes to the trash (default: as the "
                     "set says)");
}

} // namespace

CLI::Validator formatOfResult(const std::string& alternative) {
    return CLI::Validator(
        [alternative](const std::string& word) -> std::string {
            return formatNamed(word, outputFormats()) != nullptr
                       ? ""
                       : "must be " + formatNames(outputFormats()) + alternative;
        },
        "");
}

void ConvertOptions::addTo(CLI::App& command) {
    for (const auto add :
         {addSizes, addFormat, addEncoding, addSkipFitting, addColours, addMetadata, addPlaces})
        add(command, *this);
}

void ConvertOptions::addLookTo(CLI::App& command) {
    for (const auto add : {addSizes, addEncoding, addColours})
        add(command, *this);
}

} // namespace kestrine
