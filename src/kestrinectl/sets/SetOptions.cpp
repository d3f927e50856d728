#include "kestrinectl/sets/SetOptions.h"

#include "kestrinectl/sets/SetNames.h"
#include "kestrinectl/text/NumberBetween.h"
#include "kestrinectl/text/PlainNumber.h"
#include "platform/foundation/NSNumber.h"

namespace kestrine {

namespace {

/// An option --NAME with its opposite --no-NAME.
struct Switch {
    const char* name;
    const char16_t* key;
    const char* help;
};
constexpr std::array<Switch, SetOptions::switchCount> switchTable = {{
    {"exif", u"attachExifData", "Copy the camera's EXIF data into JPEG output, or not"},
    {"convert-resolution", u"convertResolution", "Count sizes in pixels, or in points"},
    {"rotate", u"autoRotate", "Turn pictures upright by their EXIF orientation, or not"},
    {"high-quality", u"highQuality", "Scale with the Lanczos filter, or with a plain linear filter"},
    {"replace", u"replaceFile",
     "Put the result in the place of the original, which goes to the trash, or into a folder beside it"},
}};

template <class T>
void put(ResizeSet& set, const char16_t* key, T value) {
    set.setValueForKey(std::make_shared<NSNumber>(value), key);
}

template <class T>
void putIfGiven(ResizeSet& set, const char16_t* key, const std::optional<T>& value) {
    if (value)
        put(set, key, *value);
}

/// The value of a field in a new set.
NSNumber defaultOf(const char16_t* key) {
    return static_cast<const NSNumber&>(*ResizeSet().valueForKey(key));
}

CLI::Validator formatName() {
    const auto complaint = [](std::string& word) -> std::string {
        return formatNamed(word) ? "" : "must be " + formatNames(presetFormats());
    };
    return CLI::Validator(complaint, "FORMAT");
}

/// Descriptions of options, with the value in a new set where one is made.
struct Descriptions {
    bool isForNewSet;

    std::string withDefault(const std::string& help, const std::string& value) const {
        return isForNewSet ? help + " (default: " + value + ")" : help;
    }
};

void addSwitch(CLI::App& command, const Switch& row, std::optional<bool>& value,
               const Descriptions& describe) {
    const std::string name = row.name;
    const bool isOn = defaultOf(row.key).boolValue();
    command
        .add_flag(
            "--" + name + ",!--no-" + name, [&value](std::int64_t count) { value = count > 0; },
            describe.withDefault(row.help, isOn ? "--" + name : "--no-" + name))
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

} // namespace

void SetOptions::addTo(CLI::App& command, bool isForNewSet) {
    const Descriptions describe{isForNewSet};
    const CLI::Validator length = numberBetween(1.0F, 1000000.0F);
    const ResizeSet fresh;
    CLI::Option* w = command.add_option(
        "--width", width,
        describe.withDefault("Scale to this width; without --height, the height follows",
                             plainNumber(fresh.width()) + " x " + plainNumber(fresh.height())));
    CLI::Option* h =
        command.add_option("--height", height, "Scale to this height; without --width, the width follows");
    CLI::Option* p = command.add_option("--percent", percent, "Scale both sides to this percentage");
    CLI::Option* l = command.add_option("--longest", longest, "Scale the longer side to this length");
    CLI::Option* k = command.add_flag("--keep-size", keepsSize, "Do not scale");
    CLI::Option* f = command.add_option("--format", format,
                                        describe.withDefault("Output format: " + formatNames(presetFormats()),
                                                             *nameOfFormat(fresh.formatType())));
    CLI::Option* q = command.add_option(
        "--quality", quality,
        describe.withDefault("JPEG quality in percent, 0 to 100", plainNumber(fresh.compression())));
    w->check(length), h->check(length), l->check(length);
    p->check(numberBetween(0.001F, 100000.0F)), q->check(numberBetween(0.0F, 100.0F)), f->check(formatName());
    for (CLI::Option* number : {w, h, p, l, q})
        number->option_text("N");
    f->option_text("FORMAT");
    for (CLI::Option* side : {w, h})
        side->excludes(p)->excludes(l)->excludes(k);
    p->excludes(l)->excludes(k);
    l->excludes(k);
    for (std::size_t i = 0; i < switchCount; ++i)
        addSwitch(command, switchTable[i], switches[i], describe);
}

void SetOptions::applyTo(ResizeSet& set) const {
    if (width || height) {
        put(set, u"resizeType", std::int32_t{ResizeTypeSize});
        put(set, u"width", width.value_or(0.0F));
        put(set, u"height", height.value_or(0.0F));
    }
    if (percent)
        put(set, u"resizeType", std::int32_t{ResizeTypeRatio});
    if (longest)
        put(set, u"resizeType", std::int32_t{ResizeTypeMaxSize});
    if (keepsSize)
        put(set, u"resizeType", unscaledResizeType);
    putIfGiven(set, u"ratio", percent);
    putIfGiven(set, u"maxSize", longest);
    if (format)
        put(set, u"formatType", *formatNamed(*format));
    putIfGiven(set, u"compression", quality);
    for (std::size_t i = 0; i < switchCount; ++i)
        putIfGiven(set, switchTable[i].key, switches[i]);
}

} // namespace kestrine
