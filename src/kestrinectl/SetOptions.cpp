#include "kestrinectl/SetOptions.h"

#include "kestrinectl/SetDescription.h"
#include "kestrinectl/SetNames.h"
#include "kestrinectl/Words.h"
#include "platform/foundation/NSNumber.h"

namespace kestrine {

namespace {

template <class T>
void put(ResizeSet& set, const char16_t* key, T value) {
    set.setValueForKey(std::make_shared<NSNumber>(value), key);
}

template <class T>
void putIfSaid(ResizeSet& set, const char16_t* key, const std::optional<T>& value) {
    if (value)
        put(set, key, *value);
}

/// A number from `low` to `high`; nothing else, and not NaN.
CLI::Validator between(double low, double high) {
    const std::string text =
        plainNumber(static_cast<float>(low)) + " to " + plainNumber(static_cast<float>(high));
    const auto complaint = [low, high, text](std::string& word) -> std::string {
        double number = 0;
        const bool fits = CLI::detail::lexical_cast(word, number) && number >= low && number <= high;
        return fits ? "" : word + " is no number from " + text;
    };
    return CLI::Validator(complaint, text);
}

/// --exif and --no-exif and their like; the last one said counts.
void addSwitch(CLI::App& command, const std::string& name, std::optional<bool>& value,
               const std::string& help) {
    const auto set = [&value](std::int64_t said) { value = said > 0; };
    command.add_flag("--" + name + ",!--no-" + name, set, help)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
}

} // namespace

void SetOptions::addTo(CLI::App& command) {
    const CLI::Validator length = between(1, 1000000);
    CLI::Option* w =
        command.add_option("--width", width, "Scale to this width; the height follows unless given too");
    CLI::Option* h =
        command.add_option("--height", height, "Scale to this height; the width follows unless given too");
    CLI::Option* p = command.add_option("--percent", percent, "Scale both sides by this percentage");
    CLI::Option* l = command.add_option("--longest", longest, "Scale the longer side to this length");
    CLI::Option* k = command.add_flag("--keep-size", keepsSize, "Do not scale");
    w->check(length), h->check(length), l->check(length);
    p->check(between(0.001, 100000));
    for (CLI::Option* side : {w, h})
        side->excludes(p)->excludes(l)->excludes(k);
    p->excludes(l)->excludes(k);
    l->excludes(k);
    command.add_option("--format", format, "jpeg, png, tiff or gif")->check(CLI::IsMember(formatNames()));
    command.add_option("--quality", quality, "JPEG quality in percent")->check(between(0, 100));
    addSwitch(command, "exif", exif, "Carry the camera's data into JPEG files");
    addSwitch(command, "convert-resolution", convertsResolution, "Count sizes in pixels, not in points");
    addSwitch(command, "rotate", rotates, "Turn pictures upright by their EXIF orientation");
    addSwitch(command, "high-quality", highQuality, "Scale with the Lanczos filter");
    addSwitch(command, "replace", replaces,
              "Put the result in the original's place, and the original into the trash");
}

void SetOptions::applyTo(ResizeSet& set) const {
    if (name)
        set.setValueForKey(NSString::fromUTF8(typedWord(*name)).object(), u"name");
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
    putIfSaid(set, u"ratio", percent);
    putIfSaid(set, u"maxSize", longest);
    if (format)
        put(set, u"formatType", *formatNamed(*format));
    putIfSaid(set, u"compression", quality);
    putIfSaid(set, u"attachExifData", exif);
    putIfSaid(set, u"convertResolution", convertsResolution);
    putIfSaid(set, u"autoRotate", rotates);
    putIfSaid(set, u"highQuality", highQuality);
    putIfSaid(set, u"replaceFile", replaces);
}

} // namespace kestrine
