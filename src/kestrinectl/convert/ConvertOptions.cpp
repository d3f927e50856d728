#include "kestrinectl/convert/ConvertOptions.h"

#include "kestrinectl/sets/SetNames.h"
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

CLI::Validator formatOfResult() {
    return CLI::Validator(
        [](const std::string& word) -> std::string {
            return formatNamed(word, outputFormats()) != nullptr ? ""
                                                                 : "must be " + formatNames(outputFormats());
        },
        "");
}

CLI::Validator nonEmpty() {
    return CLI::Validator(
        [](const std::string& word) -> std::string { return word.empty() ? "must not be empty" : ""; }, "");
}

/// An option with a value.
struct ValueOption {
    const char* name;
    std::optional<std::string>& value;
    CLI::Validator check;
    const char* text;
    std::string help;

    void addTo(CLI::App& command) const {
        command.add_option(name, value, help)->check(check)->option_text(text);
    }
};

} // namespace

void ConvertOptions::addLookTo(CLI::App& command) {
    const ValueOption rows[] = {
        {"--longest", longest, understoodBy(lengthsIn), "N[,N...]",
         "Scale the longer side to exactly N pixels; several numbers make several results per file"},
        {"--width", width, understoodBy(lengthsIn), "N[,N...]",
         "Scale to this width in pixels; without --height, the height follows"},
        {"--height", height, understoodBy(lengthsIn), "N[,N...]",
         "Scale to this height in pixels; without --width, the width follows"},
        {"--percent", percent, understoodBy(percentagesIn), "N[,N...]",
         "Scale both sides to this percentage"},
        {"--fit", fit, understoodBy(boxIn), "WxH", "Scale to the largest size that fits into this box"},
        {"--cover", cover, understoodBy(boxIn), "WxH", "Scale to exactly this size and crop the rest"},
        {"--gravity", gravity, understoodBy(gravityNamed), "PLACE",
         "The part that --cover keeps, and the place of the picture in the box of --pad: " + gravityNames()
             + " (default: center)"},
        {"--pad", pad, understoodBy(colorIn), "COLOR",
         "Fill the box of --fit with this colour, such as white or #ffcc00 (default: no margins)"},
        {"--background", background, understoodBy(colorIn), "COLOR",
         "Colour for transparent parts (default: transparent, or white where the format has no "
         "transparency)"},
        {"--effort", effort, understoodBy(effortNamed), "fast|normal|max",
         "Time to spend on smaller files, for png, webp, avif and jxl (default: normal)"},
        {"--max-bytes", maxBytes, understoodBy(bytesIn), "SIZE",
         "Use the highest quality with which a result has at most this size, such as 200k; an error if there "
         "is none"},
        {"--profile", profile, understoodBy(profileNamed), "keep|srgb",
         "Keep the colour profile, or convert to sRGB (default: keep)"},
    };
    for (const ValueOption& row : rows)
        row.addTo(command);
    command.add_flag("--no-enlarge", keepsSmall, "Do not make pictures larger (default: they are enlarged)");
    command.add_flag(
        "--lossless", isLossless,
        "Store exact pixels in formats that can be lossy or not: webp, avif and jxl (default: lossy)");
    command.add_flag(
        "--progressive", isProgressive,
        "Store JPEG so that the whole picture is shown early; a little smaller (default: baseline)");
    command
        .add_flag(
            "--upright,!--no-upright", [this](std::int64_t count) { upright = count > 0; },
            "Turn all pictures upright, or none (default without a set: --upright)")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

void ConvertOptions::addTo(CLI::App& command) {
    addLookTo(command);
    const ValueOption rows[] = {
        {"--format", format, formatOfResult(), "FORMAT",
         "Output format: " + formatNames(outputFormats())
             + " (default without a set: that of the file, or else jpeg, and png with transparency)"},
        {"--metadata", metadata, understoodBy(metadataNamed), "none|rights|exif|all",
         "What to keep of the EXIF data: nothing, artist and copyright, what describes the picture, or "
         "everything with the place, in JPEG, WebP, AVIF and JPEG XL (default without a set: exif without "
         "serial numbers and the name of the owner)"},
        {"--times", times, understoodBy(timesNamed), "keep|taken|now",
         "Modification time of the results: that of the original, when the picture was taken, or now "
         "(default: now)"},
        {"--out", out, nonEmpty(), "FOLDER",
         "Folder for the results, with the sub-folders in which the files were found"},
        {"--name", name, understoodBy(NameTemplate::parse), "TEMPLATE",
         "Names of the results below --out, with {stem}, {ext}, {set}, {width}, {height}, {n} and {date} "
         "(default: {stem}.{ext}, or {stem}-{width}.{ext} for several sizes)"},
    };
    for (const ValueOption& row : rows)
        row.addTo(command);
    command
        .add_option("--quality", quality,
                    "Quality in percent, 0 to 100, for formats that have one (default without a set: 80)")
        ->check(numberBetween(0.0F, 100.0F))
        ->option_text("N");
    command.add_flag(
        "--skip-fitting", skipsFitting,
        "Copy a file unchanged that has the format already, is not larger, stands upright and has no "
        "more metadata than asked for (default: every file is converted)");
    command.add_flag("--exif", exif, "Short for --metadata exif");
    command.add_flag("--replace", replaces,
                     "Put each result in the place of its original, which goes to the trash (default: as the "
                     "set says)");
}

} // namespace kestrine
